#include "files/basic/basic_interpreter.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "files/basic/basic_machine.h"

namespace sondrel {

namespace basic_detail {

namespace {

constexpr size_t kMaxGosubDepth = 256;
constexpr size_t kMaxForDepth = 256;
constexpr int kNoiseChannel = 3;
constexpr double kClockTicksPerSecond = 18.2;  // SOUND and NOISE durations
constexpr double kSilentFrequency = 32767.0;
constexpr double kBeepFrequency = 800.0;
constexpr double kBeepSeconds = 0.25;

double MidiToFrequency(int midiNote) { return 440.0 * std::pow(2.0, (midiNote - 69) / 12.0); }

BasicSoundKind KindOf(Articulation articulation) {
    switch (articulation) {
        case Articulation::Staccato: return BasicSoundKind::PlayStaccato;
        case Articulation::Legato: return BasicSoundKind::PlayLegato;
        case Articulation::Normal: break;
    }
    return BasicSoundKind::PlayNormal;
}

size_t Contribution(const std::string& name, const Maybe& value) {
    size_t h = std::hash<std::string>{}(name);
    if (!value) return h * 31 + 7;
    size_t v = value->text ? std::hash<std::string>{}(value->string) : std::hash<double>{}(value->number);
    return h ^ (v + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2));
}

}  // namespace

Interpreter::Interpreter(const std::vector<BasicLine>& program, const BasicRunLimits& limits) : limits_(limits) {
    for (const BasicLine& line : program) {
        lines_.push_back({line.number, TokenizeBasicLine(line.text)});
        if (line.number >= 0) index_.emplace(line.number, lines_.size() - 1);
    }
    visited_.assign(lines_.size(), false);
}

BasicRunResult Interpreter::Run() {
    try {
        while (pc_.line < lines_.size()) {
            Step();
            if (!visited_[pc_.line]) {
                // How things stood when the line first ran: a loop back to it that
                // finds them unchanged would run for ever.
                visited_[pc_.line] = true;
                loopStates_.insert({pc_.line, StateSignature()});
            }
            const BasicToken& token = Peek();
            if (token.kind == BasicTokenKind::End) {
                MoveTo({pc_.line + 1, 0});
            } else if (token.IsSymbol(":")) {
                ++pc_.token;
            } else {
                ExecuteStatement();
            }
        }
    } catch (const ProgramEnd&) {
    }
    result_.skippedLines.assign(skipped_.begin(), skipped_.end());
    return std::move(result_);
}

// Called by the music strings of each voice.
class Interpreter::Voice : public MusicMacroHost {
public:
    Voice(Interpreter& owner, int channel) : owner_(owner), channel_(channel) {}
    void Note(const MusicNote& note) override {
        double seconds = note.seconds;
        owner_.AddSound(channel_, seconds, seconds * SoundingFraction(note.articulation),
                        MidiToFrequency(note.midiNote), 0, note.volume, KindOf(note.articulation));
    }
    void Rest(double seconds) override { owner_.AddRest(channel_, seconds); }
    void SetBackground(bool background) override { owner_.background_ = background; }
    std::optional<double> NumberVariable(const std::string& name) override {
        if (IsStringName(name)) return std::nullopt;
        Maybe value = owner_.Variable(NormalName(name));
        if (!value) return std::nullopt;
        return value->number;
    }
    std::optional<std::string> StringVariable(const std::string& name) override {
        if (!IsStringName(name)) return std::nullopt;
        Maybe value = owner_.Variable(name);
        if (!value) return std::nullopt;
        return value->string;
    }
    void Step() override { owner_.Step(); }

private:
    static std::string NormalName(const std::string& name) {
        char last = name.empty() ? ' ' : name.back();
        if (last == '%' || last == '#') return name;
        return last == '!' ? name : name + '!';
    }
    Interpreter& owner_;
    int channel_;
};

void Interpreter::Step() {
    if (++steps_ > limits_.maxSteps) {
        result_.limitReached = true;
        throw ProgramEnd{};
    }
}

const BasicToken& Interpreter::Peek() const { return lines_[pc_.line].tokens[pc_.token]; }

// Every token read or passed over counts towards the step limit, so that
// long lines run many times stay bounded too.
void Interpreter::Advance() {
    Step();
    ++pc_.token;
}

const BasicToken& Interpreter::Take() {
    const BasicToken& token = Peek();
    if (token.kind != BasicTokenKind::End) Advance();
    return token;
}

bool Interpreter::AcceptSymbol(const char* symbol) {
    if (!Peek().IsSymbol(symbol)) return false;
    Advance();
    return true;
}

bool Interpreter::AcceptKeyword(const char* keyword) {
    if (!Peek().IsKeyword(keyword)) return false;
    Advance();
    return true;
}

void Interpreter::ExpectSymbol(const char* symbol) {
    if (!AcceptSymbol(symbol)) throw StatementError{};
}

bool Interpreter::AtStatementEnd() const {
    const BasicToken& token = Peek();
    return token.kind == BasicTokenKind::End || token.IsSymbol(":") || token.IsKeyword("ELSE");
}

void Interpreter::ExpectStatementEnd() {
    if (!AtStatementEnd()) throw StatementError{};
}

void Interpreter::MoveTo(Position position) {
    if (position.line != pc_.line) {
        uncertainLine_ = kNoLine;
        knownConditionLine_ = kNoLine;
    }
    pc_ = position;
}

void Interpreter::SkipStatement() {
    while (!AtStatementEnd()) Advance();
    if (Peek().IsKeyword("ELSE")) SkipToLineEnd();
}

void Interpreter::SkipToLineEnd() { pc_.token = lines_[pc_.line].tokens.size() - 1; }

bool Interpreter::Uncertain() const { return uncertainLine_ == pc_.line; }

void Interpreter::ExecuteStatement() {
    bool isIf = Peek().IsKeyword("IF");
    Position start = pc_;
    try {
        Statement();
    } catch (const StatementError&) {
        Recover(start, isIf);
    } catch (const MusicMacroError&) {
        Recover(start, isIf);
    }
}

void Interpreter::Recover(Position start, bool isIf) {
    if (lines_[start.line].number >= 0) skipped_.insert(lines_[start.line].number);
    if (pc_.line != start.line) pc_ = start;
    if (isIf) SkipToLineEnd();
    else SkipStatement();
}

void Interpreter::Statement() {
    const BasicToken& token = Peek();
    if (token.kind == BasicTokenKind::Name) return Assignment();
    if (token.kind != BasicTokenKind::Keyword) throw StatementError{};
    const std::string keyword = token.text;
    bool lineStart = pc_.token == 0;
    Take();
    if (keyword == "PLAY") return Play();
    if (keyword == "SOUND") return Sound();
    if (keyword == "BEEP") return Beep();
    if (keyword == "NOISE") return Noise();
    if (keyword == "LET") return Assignment();
    if (keyword == "MID$") return MidAssignment();
    if (keyword == "SWAP") return Swap();
    if (keyword == "FOR") return For();
    if (keyword == "NEXT") return Next();
    if (keyword == "GOTO") return Goto();
    if (keyword == "GOSUB") return Gosub();
    if (keyword == "RETURN") return Return();
    if (keyword == "IF") return If();
    if (keyword == "ON") return On();
    if (keyword == "ELSEIF" && tryElseIf_) {
        tryElseIf_ = false;
        return If();
    }
    if (keyword == "ELSE" || keyword == "ELSEIF") {
        // The branch that ran is over: a one-line IF ends with its line, a block IF at END IF.
        if (lineStart) SkipBlock(false);
        else SkipToLineEnd();
        return;
    }
    if (keyword == "END") {
        if (!AtStatementEnd()) return SkipStatement();  // END IF, END SUB
        return Finish();
    }
    if (keyword == "STOP" || keyword == "SYSTEM" || keyword == "RUN" || keyword == "CHAIN" || keyword == "NEW")
        return Finish();
    if (keyword == "READ" || keyword == "INPUT") return Forget();
    if (keyword == "LINE" && AcceptKeyword("INPUT")) return Forget();
    if (keyword == "CLEAR") {
        variables_.clear();
        unknown_.clear();
        variablesHash_ = 0;
    }
    SkipStatement();
}

void Interpreter::Finish() {
    if (Uncertain()) return SkipStatement();
    throw ProgramEnd{};
}

// READ and INPUT give their variables values that cannot be known here.
void Interpreter::Forget() {
    while (!AtStatementEnd()) {
        const BasicToken& token = Take();
        if (token.kind == BasicTokenKind::Name && !Peek().IsSymbol("(")) SetVariable(token.text, std::nullopt);
    }
}

void Interpreter::Assignment() {
    const BasicToken& name = Take();
    if (name.kind != BasicTokenKind::Name) throw StatementError{};
    if (Peek().IsSymbol("(")) return SkipStatement();  // an array element
    ExpectSymbol("=");
    Maybe value = Expression();
    ExpectStatementEnd();
    Store(name.text, value);
}

void Interpreter::Store(const std::string& name, Maybe value) {
    if (value && value->text != IsStringName(name)) throw StatementError{};  // type mismatch
    if (value && !value->text && name.back() == '%') value->number = std::nearbyint(value->number);
    SetVariable(name, std::move(value));
}

// MID$(A$, start[, length]) = text
void Interpreter::MidAssignment() {
    ExpectSymbol("(");
    const BasicToken& name = Take();
    if (name.kind != BasicTokenKind::Name || !IsStringName(name.text) || Peek().IsSymbol("(")) throw StatementError{};
    ExpectSymbol(",");
    Maybe start = Expression();
    Maybe length;
    bool hasLength = AcceptSymbol(",");
    if (hasLength) length = Expression();
    ExpectSymbol(")");
    ExpectSymbol("=");
    Maybe text = Expression();
    ExpectStatementEnd();
    Maybe target = Variable(name.text);
    if (!target || !start || (hasLength && !length) || !text) return SetVariable(name.text, std::nullopt);
    if (!text->text || start->text || (length && length->text)) throw StatementError{};
    long from = std::lround(start->number);
    if (from < 1 || from > 255) throw StatementError{};
    std::string result = target->string;
    size_t position = static_cast<size_t>(from - 1);
    if (position >= result.size()) return;
    size_t count = std::min(text->string.size(), result.size() - position);
    if (length) {
        if (length->number < 0 || length->number > 255) throw StatementError{};
        count = std::min(count, static_cast<size_t>(std::lround(length->number)));
    }
    result.replace(position, count, text->string.substr(0, count));
    SetVariable(name.text, Value{true, 0.0, result});
}

void Interpreter::Swap() {
    const BasicToken& a = Take();
    ExpectSymbol(",");
    const BasicToken& b = Take();
    if (a.kind != BasicTokenKind::Name || b.kind != BasicTokenKind::Name) throw StatementError{};
    ExpectStatementEnd();
    if (IsStringName(a.text) != IsStringName(b.text)) throw StatementError{};
    Maybe first = Variable(a.text), second = Variable(b.text);
    SetVariable(a.text, second);
    SetVariable(b.text, first);
}

Maybe Interpreter::Variable(const std::string& name) const {
    if (unknown_.count(name)) return std::nullopt;
    auto it = variables_.find(name);
    if (it != variables_.end()) return it->second;
    return IsStringName(name) ? Value{true, 0.0, {}} : Value{};
}

// Variables that were never set count as absent, not as their default value.
Maybe Interpreter::Stored(const std::string& name) const {
    auto it = variables_.find(name);
    return it != variables_.end() ? Maybe(it->second) : std::nullopt;
}

void Interpreter::SetVariable(const std::string& name, Maybe value) {
    // The hash of all variables is kept up to date entry by entry.
    if (unknown_.count(name) || variables_.count(name)) variablesHash_ ^= Contribution(name, Stored(name));
    variablesHash_ ^= Contribution(name, value);
    if (value) {
        unknown_.erase(name);
        variables_[name] = std::move(*value);
    } else {
        variables_.erase(name);
        unknown_.insert(name);
    }
}

size_t Interpreter::StateSignature() const {
    return variablesHash_ ^ (forStack_.size() * 0x100000001b3ULL) ^ (gosubStack_.size() * 0xcbf29ce484222325ULL);
}

double Interpreter::ChannelStart(int channel) {
    clocks_[channel] = std::max(clocks_[channel], programTime_);
    return clocks_[channel];
}

void Interpreter::AddSound(int channel, double seconds, double soundingSeconds, double frequency, uint8_t noiseSource,
              int volume, BasicSoundKind kind) {
    double start = clocks_[channel];
    if (start > limits_.maxSeconds) {
        result_.limitReached = true;
        throw ProgramEnd{};
    }
    BasicSound sound;
    sound.channel = channel;
    sound.start = start;
    sound.end = start + soundingSeconds;
    sound.frequency = frequency;
    sound.noiseSource = noiseSource;
    sound.volume = static_cast<uint8_t>(std::clamp(volume, 0, 15));
    sound.kind = kind;
    result_.sounds.push_back(sound);
    clocks_[channel] = start + seconds;
}

void Interpreter::AddRest(int channel, double seconds) { clocks_[channel] += seconds; }

// In the foreground the program waits until the music it started has played.
void Interpreter::StatementPlayed() {
    if (!background_) programTime_ = std::max(programTime_, *std::max_element(clocks_.begin(), clocks_.end()));
}

bool Interpreter::SoundSwitch() {
    // SOUND ON, BEEP OFF, PLAY STOP and the like only switch things.
    if (!Peek().IsKeyword("ON") && !Peek().IsKeyword("OFF") && !Peek().IsKeyword("STOP")) return false;
    SkipStatement();
    return true;
}

void Interpreter::Play() {
    if (SoundSwitch()) return;
    std::array<std::optional<std::string>, kToneVoices> voices;
    int count = 0;
    for (;;) {
        if (count == kToneVoices) throw StatementError{};
        if (!Peek().IsSymbol(",")) {
            Maybe text = Expression();
            if (!text) throw StatementError{};
            if (!text->text) throw StatementError{};
            voices[count] = text->string;
        }
        ++count;
        if (!AcceptSymbol(",")) break;
        if (AtStatementEnd()) throw StatementError{};
    }
    ExpectStatementEnd();
    for (int v = 0; v < kToneVoices; ++v) {
        if (voices[v]) ChannelStart(v);
    }
    try {
        for (int v = 0; v < kToneVoices; ++v) {
            if (!voices[v]) continue;
            Voice voice(*this, v);
            RunMusicMacro(*voices[v], voiceStates_[v], voice);
        }
    } catch (const MusicMacroError&) {
        StatementPlayed();  // what played before the fault still counts
        throw;
    }
    StatementPlayed();
}

std::vector<std::optional<double>> Interpreter::NumberArguments(size_t most) {
    std::vector<std::optional<double>> values;
    for (;;) {
        if (Peek().IsSymbol(",") || AtStatementEnd()) {
            values.push_back(std::nullopt);
        } else {
            Maybe value = Expression();
            if (!value) throw StatementError{};  // depends on what cannot be known
            if (value->text) throw StatementError{};
            values.push_back(value->number);
        }
        if (!AcceptSymbol(",")) break;
        if (AtStatementEnd()) throw StatementError{};  // a comma with nothing after it
    }
    ExpectStatementEnd();
    if (values.size() > most) throw StatementError{};
    return values;
}

// SOUND frequency, duration[, volume[, voice]]
void Interpreter::Sound() {
    if (SoundSwitch()) return;
    auto args = NumberArguments(4);
    if (args.size() < 2 || !args[0] || !args[1]) throw StatementError{};
    double frequency = *args[0], duration = *args[1];
    if (duration > 65535.0 || frequency < -32768.0 || frequency > kSilentFrequency) throw StatementError{};
    int volume = 15, channel = 0;
    if (args.size() > 2 && args[2]) {
        if (*args[2] < 0 || *args[2] > 15) throw StatementError{};
        volume = static_cast<int>(std::lround(*args[2]));
    }
    if (args.size() > 3 && args[3]) {
        if (*args[3] < 0 || *args[3] > 2) throw StatementError{};
        channel = static_cast<int>(std::lround(*args[3]));
    }
    if (duration <= 0.0) return;  // stops a sound rather than making one
    if (frequency < 37.0) throw StatementError{};
    double seconds = duration / kClockTicksPerSecond;
    ChannelStart(channel);
    if (frequency >= kSilentFrequency) AddRest(channel, seconds);
    else AddSound(channel, seconds, seconds, frequency, 0, volume, BasicSoundKind::Sound);
    StatementPlayed();
}

// NOISE source, volume, duration
void Interpreter::Noise() {
    auto args = NumberArguments(3);
    if (args.size() != 3 || !args[0] || !args[1] || !args[2]) throw StatementError{};
    if (*args[0] < 0 || *args[0] > 7 || *args[1] < 0 || *args[1] > 15 || *args[2] > 65535) throw StatementError{};
    if (*args[2] <= 0) return;
    double seconds = *args[2] / kClockTicksPerSecond;
    ChannelStart(kNoiseChannel);
    AddSound(kNoiseChannel, seconds, seconds, 0.0, static_cast<uint8_t>(std::lround(*args[0])),
             static_cast<int>(std::lround(*args[1])), BasicSoundKind::Noise);
    StatementPlayed();
}

void Interpreter::Beep() {
    if (SoundSwitch()) return;
    ExpectStatementEnd();
    ChannelStart(0);
    AddSound(0, kBeepSeconds, kBeepSeconds, kBeepFrequency, 0, 15, BasicSoundKind::Beep);
    programTime_ = std::max(programTime_, clocks_[0]);  // BEEP always waits
}

int Interpreter::LineNumberArgument() {
    const BasicToken& token = Take();
    if (token.kind != BasicTokenKind::Number) throw StatementError{};
    return static_cast<int>(std::lround(token.number));
}

// A backward jump to a line that has run already repeats the program. Unless
// a condition that can be evaluated chose it, it is taken for the endless
// loop that replays a song, and the program ends; a chosen one is followed
// while the variables keep changing, so counted loops run their course.
void Interpreter::JumpToLine(int number, bool chosen) {
    auto it = index_.find(number);
    if (it == index_.end()) throw ProgramEnd{};  // "Undefined line number"
    size_t target = it->second;
    if (target <= pc_.line && visited_[target]) {
        if (!chosen) throw ProgramEnd{};
        if (!loopStates_.insert({target, StateSignature()}).second) throw ProgramEnd{};
    }
    MoveTo({target, 0});
}

bool Interpreter::Chosen() const { return knownConditionLine_ == pc_.line; }

void Interpreter::Goto() {
    int number = LineNumberArgument();
    ExpectStatementEnd();
    if (Uncertain()) return;
    JumpToLine(number, Chosen());
}

void Interpreter::CallSubroutine(int number, Position back) {
    auto it = index_.find(number);
    if (it == index_.end()) throw ProgramEnd{};
    if (gosubStack_.size() >= kMaxGosubDepth) throw ProgramEnd{};
    gosubStack_.push_back({back, forStack_.size()});
    MoveTo({it->second, 0});
}

void Interpreter::Gosub() {
    int number = LineNumberArgument();
    ExpectStatementEnd();
    if (Uncertain()) return;
    CallSubroutine(number, pc_);
}

void Interpreter::Return() {
    std::optional<int> number;
    if (Peek().kind == BasicTokenKind::Number) number = LineNumberArgument();
    ExpectStatementEnd();
    if (Uncertain()) return;
    if (gosubStack_.empty()) throw ProgramEnd{};  // "RETURN without GOSUB"
    GosubFrame frame = gosubStack_.back();
    gosubStack_.pop_back();
    forStack_.resize(std::min(forStack_.size(), frame.forDepth));
    if (number) return JumpToLine(*number, false);
    MoveTo(frame.back);
}

// ON n GOTO/GOSUB a, b, c; ON ERROR, ON KEY and the like are passed over.
void Interpreter::On() {
    if (Peek().kind == BasicTokenKind::Keyword && !Peek().IsKeyword("NOT") && !Peek().IsKeyword("FN"))
        return SkipStatement();
    Maybe selector = Expression();
    bool gosub = AcceptKeyword("GOSUB");
    if (!gosub && !AcceptKeyword("GOTO")) return SkipStatement();
    std::vector<int> targets;
    do targets.push_back(LineNumberArgument());
    while (AcceptSymbol(","));
    ExpectStatementEnd();
    if (!selector || selector->text || Uncertain()) return;
    long n = std::lround(selector->number);
    if (n < 1 || n > static_cast<long>(targets.size())) return;  // falls through
    if (gosub) CallSubroutine(targets[n - 1], pc_);
    else JumpToLine(targets[n - 1], true);
}

// Where execution goes once the FOR statement has run: the body's first statement.
Interpreter::Position Interpreter::BodyStart(Position after) const {
    Position p = after;
    while (p.line < lines_.size()) {
        const BasicToken& token = lines_[p.line].tokens[p.token];
        if (token.IsSymbol(":")) ++p.token;
        else if (token.kind == BasicTokenKind::End) p = {p.line + 1, 0};
        else break;
    }
    return p;
}

void Interpreter::For() {
    const BasicToken& name = Take();
    if (name.kind != BasicTokenKind::Name || IsStringName(name.text)) throw StatementError{};
    ExpectSymbol("=");
    Maybe start = Expression();
    if (!AcceptKeyword("TO")) throw StatementError{};
    Maybe end = Expression();
    Maybe step = Value{};
    step->number = 1.0;
    if (AcceptKeyword("STEP")) step = Expression();
    ExpectStatementEnd();
    if ((start && start->text) || (end && end->text) || (step && step->text)) throw StatementError{};

    // A new loop on the same variable replaces the old one and those inside it.
    for (size_t i = forStack_.size(); i-- > 0;) {
        if (forStack_[i].variable == name.text) {
            forStack_.resize(i);
            break;
        }
    }
    if (forStack_.size() >= kMaxForDepth) throw ProgramEnd{};
    ForFrame frame;
    frame.variable = name.text;
    frame.body = BodyStart(pc_);
    if (!start || !end || !step || step->number == 0.0) {
        // Bounds that cannot be known (or a step that never ends): one pass.
        frame.once = true;
        Store(name.text, start);
        forStack_.push_back(frame);
        return;
    }
    frame.end = end->number;
    frame.step = step->number;
    Store(name.text, start);
    bool runs = frame.step > 0 ? start->number <= frame.end : start->number >= frame.end;
    if (runs) forStack_.push_back(frame);
    else SkipPastNext(name.text);
}

// A loop that does not run at all: on to the statement after its NEXT.
void Interpreter::SkipPastNext(const std::string& variable) {
    int depth = 0;
    while (pc_.line < lines_.size()) {
        const BasicToken& token = Peek();
        if (token.kind == BasicTokenKind::End) {
            MoveTo({pc_.line + 1, 0});
            continue;
        }
        Advance();
        if (token.IsKeyword("FOR")) {
            ++depth;
        } else if (token.IsKeyword("NEXT")) {
            do {
                std::string name = Peek().kind == BasicTokenKind::Name ? Take().text : std::string();
                if (depth == 0 && (name.empty() || name == variable)) {
                    SkipStatement();
                    return;
                }
                --depth;
            } while (AcceptSymbol(","));
        }
    }
}

void Interpreter::Next() {
    Position statement = pc_;
    --statement.token;  // the NEXT keyword itself
    std::vector<std::string> names;
    if (Peek().kind == BasicTokenKind::Name) {
        do {
            const BasicToken& name = Take();
            if (name.kind != BasicTokenKind::Name) throw StatementError{};
            names.push_back(name.text);
        } while (AcceptSymbol(","));
    }
    ExpectStatementEnd();
    if (names.empty()) names.push_back({});
    for (const std::string& name : names) {
        size_t i = forStack_.size();
        while (i > 0 && !name.empty() && forStack_[i - 1].variable != name) --i;
        if (i == 0) throw StatementError{};  // "NEXT without FOR"
        forStack_.resize(i);
        ForFrame& frame = forStack_.back();
        if (frame.once) {
            forStack_.pop_back();
            continue;
        }
        Maybe current = Variable(frame.variable);
        if (!current) {
            forStack_.pop_back();
            continue;
        }
        double value = current->number;
        if (frame.body == statement) {
            // An empty loop only waits; the variable gets its final value at once.
            double passes = std::floor((frame.end - value) / frame.step);
            if (passes > 0) value += passes * frame.step;
        }
        value += frame.step;
        Store(frame.variable, Value{false, value, {}});
        bool again = frame.step > 0 ? value <= frame.end : value >= frame.end;
        if (again) {
            MoveTo(frame.body);
            return;
        }
        forStack_.pop_back();
    }
}

// Finds the ELSE that belongs to the IF whose condition has just been read.
bool Interpreter::FindElse() {
    int depth = 0;
    for (;;) {
        const BasicToken& token = Peek();
        if (token.kind == BasicTokenKind::End) return false;
        Advance();
        if (token.IsKeyword("IF")) ++depth;
        else if (token.IsKeyword("ELSE") && depth-- == 0) return true;
    }
}

bool Interpreter::IsBlockIf(const Line& line) const {
    const auto& t = line.tokens;
    return t.size() >= 3 && (t[0].IsKeyword("IF") || t[0].IsKeyword("ELSEIF")) && t[t.size() - 2].IsKeyword("THEN");
}

// Skips the lines of a block IF's branch: to after its ELSE (when wanted),
// to an ELSEIF whose condition is then tried, or past its END IF.
void Interpreter::SkipBlock(bool toElse) {
    int depth = 0;
    for (size_t line = pc_.line + 1; line < lines_.size(); ++line) {
        Step();
        const auto& t = lines_[line].tokens;
        if (t[0].IsKeyword("IF") && IsBlockIf(lines_[line])) {
            ++depth;
        } else if (t[0].IsKeyword("END") && t[1].IsKeyword("IF")) {
            if (depth-- == 0) {
                MoveTo({line, 2});
                return;
            }
        } else if (depth == 0 && toElse && t[0].IsKeyword("ELSE")) {
            MoveTo({line, 1});
            return;
        } else if (depth == 0 && toElse && t[0].IsKeyword("ELSEIF")) {
            MoveTo({line, 0});
            tryElseIf_ = true;  // its condition is tried next
            return;
        }
    }
    MoveTo({lines_.size(), 0});
}

void Interpreter::If() {
    Maybe condition = Expression();
    std::optional<int> target;
    bool block = false;
    if (AcceptKeyword("THEN")) {
        if (Peek().kind == BasicTokenKind::Number) target = LineNumberArgument();
        else block = Peek().kind == BasicTokenKind::End;
    } else if (AcceptKeyword("GOTO")) {
        target = LineNumberArgument();
    } else {
        throw StatementError{};
    }
    if (condition && condition->text) throw StatementError{};

    if (!condition) {
        // Not known: the branch runs for its music, but its jumps are not taken.
        if (block) return MoveTo({pc_.line + 1, 0});
        uncertainLine_ = pc_.line;
        if (target) SkipToLineEnd();
        return;
    }
    knownConditionLine_ = pc_.line;
    if (condition->number != 0.0) {
        if (block) return MoveTo({pc_.line + 1, 0});
        if (target) JumpToLine(*target, true);
        return;
    }
    if (block) return SkipBlock(true);
    if (!FindElse()) return SkipToLineEnd();
    if (Peek().kind == BasicTokenKind::Number) JumpToLine(LineNumberArgument(), true);
}

}  // namespace basic_detail

BasicRunResult RunBasicProgram(const std::vector<BasicLine>& program, const BasicRunLimits& limits) {
    return basic_detail::Interpreter(program, limits).Run();
}

}  // namespace sondrel
