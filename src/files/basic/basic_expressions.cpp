// The expression evaluator of the BASIC interpreter: operators by their
// precedence, variables, and the built-in functions whose results can be
// known without running the machine.

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "files/basic/basic_machine.h"

namespace sondrel::basic_detail {

namespace {

constexpr size_t kMaxStringLength = 32767;

double Truth(bool value) { return value ? -1.0 : 0.0; }

double CheckNumber(double value) {
    if (!std::isfinite(value) || std::fabs(value) > 1e38) throw StatementError{};  // "Overflow"
    return value;
}

long Integer(const Value& value) {
    if (value.text) throw StatementError{};
    if (value.number < -2147483648.0 || value.number > 2147483647.0) throw StatementError{};
    return std::lround(value.number);
}

// Bounds the recursion of deeply nested expressions ("((((..." or "- - - ...").
class Nested {
public:
    explicit Nested(int& depth) : depth_(depth) {
        if (++depth_ > kMaxNesting) {
            --depth_;
            throw StatementError{};
        }
    }
    ~Nested() { --depth_; }
    Nested(const Nested&) = delete;
    Nested& operator=(const Nested&) = delete;

private:
    static constexpr int kMaxNesting = 200;
    int& depth_;
};

std::string FormatNumber(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%s%.7G", value >= 0 ? " " : "", value);
    return text;
}

}  // namespace

Maybe Interpreter::Expression() {
    Nested nested(nesting_);
    return Binary(0);
}

// Operator levels from the loosest: IMP, EQV, XOR, OR, AND, then NOT and the rest below.
Maybe Interpreter::Binary(int level) {
    static const char* const kLogical[] = {"IMP", "EQV", "XOR", "OR", "AND"};
    if (level == 5) return Not();
    Maybe left = Binary(level + 1);
    while (AcceptKeyword(kLogical[level])) {
        Maybe right = Binary(level + 1);
        if (!left || !right) {
            left.reset();
            continue;
        }
        long a = Integer(*left), b = Integer(*right);
        long r = level == 0 ? (~a | b) : level == 1 ? ~(a ^ b) : level == 2 ? (a ^ b) : level == 3 ? (a | b) : (a & b);
        left = Value{false, static_cast<double>(r), {}};
    }
    return left;
}

Maybe Interpreter::Not() {
    if (!AcceptKeyword("NOT")) return Relational();
    Nested nested(nesting_);
    Maybe operand = Not();
    if (!operand) return std::nullopt;
    return Value{false, static_cast<double>(~Integer(*operand)), {}};
}

Maybe Interpreter::Relational() {
    Maybe left = Additive();
    for (;;) {
        std::string op;
        for (const char* symbol : {"=", "<>", "<", ">", "<=", ">="}) {
            if (Peek().IsSymbol(symbol)) op = symbol;
        }
        if (op.empty()) return left;
        Take();
        Maybe right = Additive();
        if (!left || !right) {
            left.reset();
            continue;
        }
        if (left->text != right->text) throw StatementError{};
        int order = left->text ? left->string.compare(right->string)
                               : (left->number < right->number ? -1 : left->number > right->number ? 1 : 0);
        bool result = op == "=" ? order == 0 : op == "<>" ? order != 0 : op == "<" ? order < 0
                      : op == ">" ? order > 0 : op == "<=" ? order <= 0 : order >= 0;
        left = Value{false, Truth(result), {}};
    }
}

Maybe Interpreter::Additive() {
    Maybe left = WholeNumbers(true);
    for (;;) {
        bool plus = Peek().IsSymbol("+");
        if (!plus && !Peek().IsSymbol("-")) return left;
        Take();
        Maybe right = WholeNumbers(true);
        if (!left || !right) {
            left.reset();
            continue;
        }
        if (left->text != right->text || (left->text && !plus)) throw StatementError{};
        if (left->text) {
            left->string += right->string;
            if (left->string.size() > kMaxStringLength) throw StatementError{};  // "String too long"
        } else {
            left->number = CheckNumber(plus ? left->number + right->number : left->number - right->number);
        }
    }
}

// MOD, and below it \, work on whole numbers.
Maybe Interpreter::WholeNumbers(bool modulo) {
    Maybe left = modulo ? WholeNumbers(false) : Product();
    while (modulo ? AcceptKeyword("MOD") : AcceptSymbol("\\")) {
        Maybe right = modulo ? WholeNumbers(false) : Product();
        if (!left || !right) {
            left.reset();
            continue;
        }
        long a = Integer(*left), b = Integer(*right);
        if (b == 0) throw StatementError{};  // "Division by zero"
        left = Value{false, static_cast<double>(modulo ? a % b : a / b), {}};
    }
    return left;
}

Maybe Interpreter::Product() {
    Maybe left = Negation();
    for (;;) {
        bool times = Peek().IsSymbol("*");
        if (!times && !Peek().IsSymbol("/")) return left;
        Take();
        Maybe right = Negation();
        if (!left || !right) {
            left.reset();
            continue;
        }
        if (left->text || right->text) throw StatementError{};
        if (!times && right->number == 0.0) throw StatementError{};  // "Division by zero"
        left->number = CheckNumber(times ? left->number * right->number : left->number / right->number);
    }
}

Maybe Interpreter::Negation() {
    while (AcceptSymbol("+")) {
    }
    if (!AcceptSymbol("-")) return Power();
    Nested nested(nesting_);
    Maybe operand = Negation();
    if (operand && operand->text) throw StatementError{};
    if (operand) operand->number = -operand->number;
    return operand;
}

Maybe Interpreter::Power() {
    Maybe left = Primary();
    while (AcceptSymbol("^")) {
        bool negative = false;
        while (Peek().IsSymbol("-") || Peek().IsSymbol("+")) negative ^= Take().IsSymbol("-");
        Maybe right = Primary();
        if (!left || !right) {
            left.reset();
            continue;
        }
        if (left->text || right->text) throw StatementError{};
        left->number = CheckNumber(std::pow(left->number, negative ? -right->number : right->number));
    }
    return left;
}

std::vector<Maybe> Interpreter::Arguments() {
    std::vector<Maybe> values;
    ExpectSymbol("(");
    do values.push_back(Expression());
    while (AcceptSymbol(","));
    ExpectSymbol(")");
    return values;
}

Maybe Interpreter::Primary() {
    const BasicToken& token = Take();
    switch (token.kind) {
        case BasicTokenKind::Number:
            return Value{false, token.number, {}};
        case BasicTokenKind::String:
            return Value{true, 0.0, token.text};
        case BasicTokenKind::Name:
            if (Peek().IsSymbol("(")) {
                Arguments();  // an array element
                return std::nullopt;
            }
            return Charged(Variable(token.text));
        case BasicTokenKind::Symbol:
            if (token.text == "(") {
                Maybe value = Expression();
                ExpectSymbol(")");
                return value;
            }
            throw StatementError{};
        case BasicTokenKind::Keyword:
            return Function(token.text);
        case BasicTokenKind::End:
            break;
    }
    throw StatementError{};
}

// Long strings cost steps in proportion to their length when they are used.
Maybe Interpreter::Charged(Maybe value) {
    if (value && value->text) {
        for (size_t n = value->string.size() / 512; n > 0; --n) Step();
    }
    return value;
}

Maybe Interpreter::Function(const std::string& name) {
    if (name == "FN") {
        if (Peek().kind == BasicTokenKind::Name) Take();
        if (Peek().IsSymbol("(")) Arguments();
        return std::nullopt;
    }
    std::vector<Maybe> args;
    if (Peek().IsSymbol("(")) args = Arguments();
    for (const Maybe& arg : args) {
        if (!arg) return std::nullopt;
    }
    auto number = [&](size_t i) -> double {
        if (i >= args.size() || args[i]->text) throw StatementError{};
        return args[i]->number;
    };
    auto text = [&](size_t i) -> const std::string& {
        if (i >= args.size() || !args[i]->text) throw StatementError{};
        return args[i]->string;
    };
    auto count = [&](size_t i, double most) -> size_t {
        double n = number(i);
        if (n < 0 || n > most) throw StatementError{};
        return static_cast<size_t>(std::lround(n));
    };
    auto numeric = [](double v) { return Maybe(Value{false, CheckNumber(v), {}}); };
    auto string = [](std::string s) { return Maybe(Value{true, 0.0, std::move(s)}); };

    if (name == "CHR$") return string(std::string(1, static_cast<char>(count(0, 255))));
    if (name == "LEN") return numeric(static_cast<double>(text(0).size()));
    if (name == "ASC") {
        if (text(0).empty()) throw StatementError{};
        return numeric(static_cast<unsigned char>(text(0)[0]));
    }
    if (name == "VAL") return numeric(std::strtod(text(0).c_str(), nullptr));
    if (name == "STR$") return string(FormatNumber(number(0)));
    if (name == "LEFT$") return string(text(0).substr(0, count(1, 255)));
    if (name == "RIGHT$") {
        size_t n = count(1, 255);
        const std::string& s = text(0);
        return string(n >= s.size() ? s : s.substr(s.size() - n));
    }
    if (name == "MID$") {
        size_t from = count(1, 255);
        if (from < 1) throw StatementError{};
        const std::string& s = text(0);
        size_t n = args.size() > 2 ? count(2, 255) : std::string::npos;
        return string(from > s.size() ? std::string() : s.substr(from - 1, n));
    }
    if (name == "STRING$") {
        size_t n = count(0, 255);
        char c = args.size() > 1 && args[1]->text ? (text(1).empty() ? throw StatementError{} : text(1)[0])
                                                   : static_cast<char>(count(1, 255));
        return string(std::string(n, c));
    }
    if (name == "SPACE$") return string(std::string(count(0, 255), ' '));
    if (name == "INT") return numeric(std::floor(number(0)));
    if (name == "FIX") return numeric(std::trunc(number(0)));
    if (name == "CINT") return numeric(std::nearbyint(number(0)));
    if (name == "CSNG" || name == "CDBL") return numeric(number(0));
    if (name == "ABS") return numeric(std::fabs(number(0)));
    if (name == "SGN") return numeric(number(0) > 0 ? 1.0 : number(0) < 0 ? -1.0 : 0.0);
    if (name == "SQR") {
        if (number(0) < 0) throw StatementError{};
        return numeric(std::sqrt(number(0)));
    }
    if (name == "LOG") {
        if (number(0) <= 0) throw StatementError{};
        return numeric(std::log(number(0)));
    }
    if (name == "EXP") return numeric(std::exp(number(0)));
    if (name == "SIN") return numeric(std::sin(number(0)));
    if (name == "COS") return numeric(std::cos(number(0)));
    if (name == "TAN") return numeric(std::tan(number(0)));
    if (name == "ATN") return numeric(std::atan(number(0)));
    // Everything else (RND, INKEY$, TIMER, PEEK, PLAY(n), SCREEN(r, c) ...) depends
    // on the running machine. Keywords that are no functions end up here too.
    if (args.empty() && name != "RND" && name != "INKEY$" && name != "TIMER" && name != "CSRLIN" &&
        name != "DATE$" && name != "TIME$" && name != "ERL" && name != "ERR")
        throw StatementError{};
    return std::nullopt;
}

}  // namespace sondrel::basic_detail
