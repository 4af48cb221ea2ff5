#include "cli/cli_options.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>

namespace sondrel::cli {

int ParseWholeNumber(const std::string& text, int low, int high, const std::string& option) {
    size_t used = 0;
    int value = 0;
    try {
        value = std::stoi(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != text.size() || value < low || value > high)
        throw UsageError(option + ": \"" + text + "\" is not a number from " + std::to_string(low) + " to " +
                         std::to_string(high));
    return value;
}

Arguments::Arguments(const std::vector<std::string>& args, const std::vector<std::string>& valueOptions,
                     const std::vector<std::string>& flags) {
    auto known = [](const std::vector<std::string>& list, const std::string& name) {
        return std::find(list.begin(), list.end(), name) != list.end();
    };
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg.size() < 2 || arg.rfind("--", 0) != 0) {
            positional_.push_back(arg);
            continue;
        }
        std::string name = arg;
        std::optional<std::string> value;
        if (auto eq = arg.find('='); eq != std::string::npos) {
            name = arg.substr(0, eq);
            value = arg.substr(eq + 1);
        }
        if (known(flags, name)) {
            if (value) throw UsageError(name + " takes no value");
            values_[name].push_back("");
        } else if (known(valueOptions, name)) {
            if (!value) {
                if (i + 1 >= args.size()) throw UsageError(name + " needs a value");
                value = args[++i];
            }
            values_[name].push_back(*value);
        } else {
            throw UsageError("unknown option " + name);
        }
    }
}

std::optional<std::string> Arguments::Value(const std::string& option) const {
    auto it = values_.find(option);
    if (it == values_.end()) return std::nullopt;
    return it->second.back();
}

std::vector<std::string> Arguments::Values(const std::string& option) const {
    auto it = values_.find(option);
    return it == values_.end() ? std::vector<std::string>{} : it->second;
}

int Arguments::Int(const std::string& option, int fallback, int low, int high) const {
    auto text = Value(option);
    return text ? ParseWholeNumber(*text, low, high, option) : fallback;
}

double Arguments::Double(const std::string& option, double fallback, double low, double high) const {
    auto text = Value(option);
    if (!text) return fallback;
    errno = 0;
    char* end = nullptr;
    double value = std::strtod(text->c_str(), &end);
    if (text->empty() || *end != '\0' || errno != 0 || !(value >= low && value <= high))
        throw UsageError(option + " must be a number from " + std::to_string(static_cast<int>(low)) + " to " +
                         std::to_string(static_cast<int>(high)) + ", not \"" + *text + "\"");
    return value;
}

}  // namespace sondrel::cli
