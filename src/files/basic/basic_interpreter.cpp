#include "files/basic/basic_interpreter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "files/basic/basic_lexer.h"
#include "files/basic/basic_music_macro.h"

namespace sondrel {

namespace {

constexpr size_t kMaxStringLength = 32767;
constexpr size_t kMaxGosubDepth = 256;
constexpr size_t kMaxForDepth = 256;
constexpr int kToneVoices = 3;
constexpr int kNoiseChannel = 3;
constexpr double kClockTicksPerSecond = 18.2;  // SOUND and NOISE durations
constexpr double kSilentFrequency = 32767.0;
constexpr double kBeepFrequency = 800.0;
constexpr double kBeepSeconds = 0.25;

struct Value {
    bool text = false;
    double number = 0.0;
    std::string string;
};
using Maybe = std::optional<Value>;  // nothing: a value that cannot be known

// A statement that BASIC would refuse; the rest of it is skipped.
struct StatementError {};
// The program has ended (or must end).
struct ProgramEnd {};

double MidiToFrequency(int midiNote) { return 440.0 * std::pow(2.0, (midiNote - 69) / 12.0); }

BasicSoundKind KindOf(Articulation articulation) {
    switch (articulation) {
        case Articulation::Staccato: return BasicSoundKind::PlayStaccato;
        case Articulation::Legato: return BasicSoundKind::PlayLegato;
        case Articulation::Normal: break;
    }
    return BasicSoundKind::PlayNormal;
}

bool IsStringName(const std::string& name) { return !name.empty() && name.back() == '$'; }

class Interpreter {
public:
    Interpreter(const std::vector<BasicLine>& program, const BasicRunLimits& limits) : limits_(limits) {
        for (const BasicLine& line : program) {
            lines_.push_back({line.number, TokenizeBasicLine(line.text)});
            if (line.number >= 0) index_.emplace(line.number, lines_.size() - 1);
        }
        visited_.assign(lines_.size(), false);
    }

    BasicRunResult Run() {
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
    class Voice : public MusicMacroHost {
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

private:
    struct Line {
        int number;
        std::vector<BasicToken> tokens;
    };
    struct Position {
        size_t line = 0;
        size_t token = 0;
        bool operator==(const Position&) const = default;
    };
    struct ForFrame {
        std::string variable;
        double end = 0.0;
        double step = 0.0;
        Position body;
        bool once = false;  // bounds not known: the body runs once
    };
    struct GosubFrame {
        Position back;
        size_t forDepth;
    };

    // ---- bookkeeping ----

    void Step() {
        if (++steps_ > limits_.maxSteps) {
            result_.limitReached = true;
            throw ProgramEnd{};
        }
    }

    const BasicToken& Peek() const { return lines_[pc_.line].tokens[pc_.token]; }
    const BasicToken& PeekAhead(size_t n) const {
        const auto& tokens = lines_[pc_.line].tokens;
        return tokens[std::min(pc_.token + n, tokens.size() - 1)];
    }
    // Every token read or passed over counts towards the step limit, so that
    // long lines run many times stay bounded too.
    void Advance() {
        Step();
        ++pc_.token;
    }
    const BasicToken& Take() {
        const BasicToken& token = Peek();
        if (token.kind != BasicTokenKind::End) Advance();
        return token;
    }
    bool AcceptSymbol(const char* symbol) {
        if (!Peek().IsSymbol(symbol)) return false;
        Advance();
        return true;
    }
    bool AcceptKeyword(const char* keyword) {
        if (!Peek().IsKeyword(keyword)) return false;
        Advance();
        return true;
    }
    void ExpectSymbol(const char* symbol) {
        if (!AcceptSymbol(symbol)) throw StatementError{};
    }
    bool AtStatementEnd() const {
        const BasicToken& token = Peek();
        return token.kind == BasicTokenKind::End || token.IsSymbol(":") || token.IsKeyword("ELSE");
    }
    void ExpectStatementEnd() {
        if (!AtStatementEnd()) throw StatementError{};
    }

    void MoveTo(Position position) {
        if (position.line != pc_.line) {
            uncertainLine_ = kNoLine;
            knownConditionLine_ = kNoLine;
        }
        pc_ = position;
    }
    void SkipStatement() {
        while (!AtStatementEnd()) Advance();
        if (Peek().IsKeyword("ELSE")) SkipToLineEnd();
    }
    void SkipToLineEnd() { pc_.token = lines_[pc_.line].tokens.size() - 1; }
    bool Uncertain() const { return uncertainLine_ == pc_.line; }

    // ---- statements ----

    void ExecuteStatement() {
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

    void Recover(Position start, bool isIf) {
        if (lines_[start.line].number >= 0) skipped_.insert(lines_[start.line].number);
        if (pc_.line != start.line) pc_ = start;
        if (isIf) SkipToLineEnd();
        else SkipStatement();
    }

    void Statement() {
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

    void Finish() {
        if (Uncertain()) return SkipStatement();
        throw ProgramEnd{};
    }

    // READ and INPUT give their variables values that cannot be known here.
    void Forget() {
        while (!AtStatementEnd()) {
            const BasicToken& token = Take();
            if (token.kind == BasicTokenKind::Name && !Peek().IsSymbol("(")) SetVariable(token.text, std::nullopt);
        }
    }

    void Assignment() {
        const BasicToken& name = Take();
        if (name.kind != BasicTokenKind::Name) throw StatementError{};
        if (Peek().IsSymbol("(")) return SkipStatement();  // an array element
        ExpectSymbol("=");
        Maybe value = Expression();
        ExpectStatementEnd();
        Store(name.text, value);
    }

    void Store(const std::string& name, Maybe value) {
        if (value && value->text != IsStringName(name)) throw StatementError{};  // type mismatch
        if (value && !value->text && name.back() == '%') value->number = std::nearbyint(value->number);
        SetVariable(name, std::move(value));
    }

    // MID$(A$, start[, length]) = text
    void MidAssignment() {
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

    void Swap() {
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

    // ---- variables ----

    Maybe Variable(const std::string& name) const {
        if (unknown_.count(name)) return std::nullopt;
        auto it = variables_.find(name);
        if (it != variables_.end()) return it->second;
        return IsStringName(name) ? Value{true, 0.0, {}} : Value{};
    }

    static size_t Contribution(const std::string& name, const Maybe& value) {
        size_t h = std::hash<std::string>{}(name);
        if (!value) return h * 31 + 7;
        size_t v = value->text ? std::hash<std::string>{}(value->string) : std::hash<double>{}(value->number);
        return h ^ (v + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2));
    }

    // Variables that were never set count as absent, not as their default value.
    Maybe Stored(const std::string& name) const {
        auto it = variables_.find(name);
        return it != variables_.end() ? Maybe(it->second) : std::nullopt;
    }

    void SetVariable(const std::string& name, Maybe value) {
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

    size_t StateSignature() const {
        return variablesHash_ ^ (forStack_.size() * 0x100000001b3ULL) ^ (gosubStack_.size() * 0xcbf29ce484222325ULL);
    }

    // ---- sounds ----

    double ChannelStart(int channel) {
        clocks_[channel] = std::max(clocks_[channel], programTime_);
        return clocks_[channel];
    }

    void AddSound(int channel, double seconds, double soundingSeconds, double frequency, uint8_t noiseSource,
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

    void AddRest(int channel, double seconds) { clocks_[channel] += seconds; }

    // In the foreground the program waits until the music it started has played.
    void StatementPlayed() {
        if (!background_) programTime_ = std::max(programTime_, *std::max_element(clocks_.begin(), clocks_.end()));
    }

    bool SoundSwitch() {
        // SOUND ON, BEEP OFF, PLAY STOP and the like only switch things.
        if (!Peek().IsKeyword("ON") && !Peek().IsKeyword("OFF") && !Peek().IsKeyword("STOP")) return false;
        SkipStatement();
        return true;
    }

    void Play() {
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

    std::vector<std::optional<double>> NumberArguments(size_t most) {
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
    void Sound() {
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
    void Noise() {
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

    void Beep() {
        if (SoundSwitch()) return;
        ExpectStatementEnd();
        ChannelStart(0);
        AddSound(0, kBeepSeconds, kBeepSeconds, kBeepFrequency, 0, 15, BasicSoundKind::Beep);
        programTime_ = std::max(programTime_, clocks_[0]);  // BEEP always waits
    }

    // ---- control flow ----

    int LineNumberArgument() {
        const BasicToken& token = Take();
        if (token.kind != BasicTokenKind::Number) throw StatementError{};
        return static_cast<int>(std::lround(token.number));
    }

    // A backward jump to a line that has run already repeats the program. Unless
    // a condition that can be evaluated chose it, it is taken for the endless
    // loop that replays a song, and the program ends; a chosen one is followed
    // while the variables keep changing, so counted loops run their course.
    void JumpToLine(int number, bool chosen) {
        auto it = index_.find(number);
        if (it == index_.end()) throw ProgramEnd{};  // "Undefined line number"
        size_t target = it->second;
        if (target <= pc_.line && visited_[target]) {
            if (!chosen) throw ProgramEnd{};
            if (!loopStates_.insert({target, StateSignature()}).second) throw ProgramEnd{};
        }
        MoveTo({target, 0});
    }

    bool Chosen() const { return knownConditionLine_ == pc_.line; }

    void Goto() {
        int number = LineNumberArgument();
        ExpectStatementEnd();
        if (Uncertain()) return;
        JumpToLine(number, Chosen());
    }

    void CallSubroutine(int number, Position back) {
        auto it = index_.find(number);
        if (it == index_.end()) throw ProgramEnd{};
        if (gosubStack_.size() >= kMaxGosubDepth) throw ProgramEnd{};
        gosubStack_.push_back({back, forStack_.size()});
        MoveTo({it->second, 0});
    }

    void Gosub() {
        int number = LineNumberArgument();
        ExpectStatementEnd();
        if (Uncertain()) return;
        CallSubroutine(number, pc_);
    }

    void Return() {
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
    void On() {
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
    Position BodyStart(Position after) const {
        Position p = after;
        while (p.line < lines_.size()) {
            const BasicToken& token = lines_[p.line].tokens[p.token];
            if (token.IsSymbol(":")) ++p.token;
            else if (token.kind == BasicTokenKind::End) p = {p.line + 1, 0};
            else break;
        }
        return p;
    }

    void For() {
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
    void SkipPastNext(const std::string& variable) {
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

    void Next() {
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
    bool FindElse() {
        int depth = 0;
        for (;;) {
            const BasicToken& token = Peek();
            if (token.kind == BasicTokenKind::End) return false;
            Advance();
            if (token.IsKeyword("IF")) ++depth;
            else if (token.IsKeyword("ELSE") && depth-- == 0) return true;
        }
    }

    bool IsBlockIf(const Line& line) const {
        const auto& t = line.tokens;
        return t.size() >= 3 && (t[0].IsKeyword("IF") || t[0].IsKeyword("ELSEIF")) && t[t.size() - 2].IsKeyword("THEN");
    }

    // Skips the lines of a block IF's branch: to after its ELSE (when wanted),
    // to an ELSEIF whose condition is then tried, or past its END IF.
    void SkipBlock(bool toElse) {
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

    void If() {
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

    // ---- expressions ----

    static bool IsTrue(double value) { return value != 0.0; }
    static double Truth(bool value) { return value ? -1.0 : 0.0; }

    static double CheckNumber(double value) {
        if (!std::isfinite(value) || std::fabs(value) > 1e38) throw StatementError{};  // "Overflow"
        return value;
    }

    static long Integer(const Value& value) {
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

    Maybe Expression() {
        Nested nested(nesting_);
        return Binary(0);
    }

    // Operator levels from the loosest: IMP, EQV, XOR, OR, AND, then NOT and the rest below.
    Maybe Binary(int level) {
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

    Maybe Not() {
        if (!AcceptKeyword("NOT")) return Relational();
        Nested nested(nesting_);
        Maybe operand = Not();
        if (!operand) return std::nullopt;
        return Value{false, static_cast<double>(~Integer(*operand)), {}};
    }

    Maybe Relational() {
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

    Maybe Additive() {
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
    Maybe WholeNumbers(bool modulo) {
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

    Maybe Product() {
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

    Maybe Negation() {
        while (AcceptSymbol("+")) {
        }
        if (!AcceptSymbol("-")) return Power();
        Nested nested(nesting_);
        Maybe operand = Negation();
        if (operand && operand->text) throw StatementError{};
        if (operand) operand->number = -operand->number;
        return operand;
    }

    Maybe Power() {
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

    std::vector<Maybe> Arguments() {
        std::vector<Maybe> values;
        ExpectSymbol("(");
        do values.push_back(Expression());
        while (AcceptSymbol(","));
        ExpectSymbol(")");
        return values;
    }

    Maybe Primary() {
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
    Maybe Charged(Maybe value) {
        if (value && value->text) {
            for (size_t n = value->string.size() / 512; n > 0; --n) Step();
        }
        return value;
    }

    static std::string FormatNumber(double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%s%.7G", value >= 0 ? " " : "", value);
        return text;
    }

    Maybe Function(const std::string& name) {
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

    static constexpr size_t kNoLine = static_cast<size_t>(-1);

    BasicRunLimits limits_;
    std::vector<Line> lines_;
    std::map<int, size_t> index_;
    std::vector<bool> visited_;
    Position pc_;
    size_t uncertainLine_ = kNoLine;       // the line of an IF whose condition is not known
    size_t knownConditionLine_ = kNoLine;  // the line of an IF whose condition was evaluated
    long steps_ = 0;

    std::map<std::string, Value> variables_;
    std::set<std::string> unknown_;
    std::vector<ForFrame> forStack_;
    std::vector<GosubFrame> gosubStack_;
    std::set<std::pair<size_t, size_t>> loopStates_;
    std::set<int> skipped_;
    size_t variablesHash_ = 0;
    bool tryElseIf_ = false;  // a skipped block IF arrived at an ELSEIF
    int nesting_ = 0;         // of expressions being evaluated

    std::array<MusicVoiceState, kToneVoices> voiceStates_{};
    std::array<double, 4> clocks_{};  // where each channel's queue ends
    double programTime_ = 0.0;        // how far the program has waited
    bool background_ = false;

    BasicRunResult result_;
};

}  // namespace

BasicRunResult RunBasicProgram(const std::vector<BasicLine>& program, const BasicRunLimits& limits) {
    return Interpreter(program, limits).Run();
}

}  // namespace sondrel
