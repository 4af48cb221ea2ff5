// The built program under a storm of random keys, clicks, drags and wheel
// turns (tests/e2e/monkey_events.h), in batches. After each batch the
// program must still be running or have ended normally (then it starts
// again), must not have reported a fault, must answer its window's ping,
// must have left no crash save, and every module it saved must load back.
//
// The storm may take the file requester anywhere, so the program runs where
// nothing but its own folder can be written: a mount namespace of its own
// (unshare) in which every other mount is read-only.
//
// SONDREL_MONKEY_SEED=N[,M...] storms those seeds instead of the fixed ones,
// SONDREL_MONKEY_BATCH=K stops each after batch K (a replay),
// SONDREL_MONKEY_SECONDS=S storms each seed S seconds, and
// SONDREL_MONKEY_FRESH_SECONDS=S storms fresh seeds for S seconds in all.

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <utility>

#include "e2e/monkey_events.h"
#include "e2e/x_session.h"
#include "files/module_file.h"
#include "test_support.h"
#include "ui/requesters/file_requester.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using e2e::ChildProcess;
using e2e::ShellQuoted;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// About two minutes in all; the sanitizer build is several times slower.
constexpr uint64_t kFixedSeeds[] = {1, 2, 3, 4};
constexpr double kSeedSeconds = kSanitized ? 15 : 27;
constexpr double kStartSeconds = kSanitized ? 60 : 20;
// A program that doesn't answer its window's ping for this long hangs.
constexpr double kAnswerSeconds = kSanitized ? 30 : 10;

// Mounts the folder given first over itself, makes every other mount
// read-only and runs the rest of the arguments.
constexpr char kShutInScript[] = R"(set -e
box=$1
shift
mount --bind "$box" "$box"
while read -r _ _ _ _ point _; do
    [ "$point" = "$box" ] || mount -o remount,bind,ro "$point" 2>/dev/null || true
done < /proc/self/mountinfo
exec "$@"
)";

std::optional<std::string> Environment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') return std::nullopt;
    return std::string(value);
}

double SecondsPerSeed() {
    const auto text = Environment("SONDREL_MONKEY_SECONDS");
    return text ? std::strtod(text->c_str(), nullptr) : kSeedSeconds;
}

std::optional<int> LastBatch() {
    const auto text = Environment("SONDREL_MONKEY_BATCH");
    if (!text) return std::nullopt;
    return std::atoi(text->c_str());
}

std::string TextFrom(const fs::path& file, std::streamoff offset) {
    std::ifstream in(file, std::ios::binary);
    in.seekg(offset);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string LastLines(const std::string& text, int count) {
    size_t start = text.size();
    while (start > 0 && count >= 0)
        if (text[--start] == '\n') --count;
    return text.substr(start == 0 ? 0 : start + 1);
}

// What the program writes on stderr when it goes wrong: its fault trap and
// crash save, the sanitizers, the C++ runtime.
bool ReportsFault(const std::string& text) {
    for (const char* mark : {"Hardware fault", "has crashed", "AddressSanitizer", "runtime error:",
                             "terminate called"})
        if (text.find(mark) != std::string::npos) return true;
    return false;
}

// Why a file the program saved as a module isn't one; empty when it loads.
std::string ModuleProblem(const fs::path& file) {
    try {
        if (DetectFileKind(file.string()) != FileKind::CurrentModule) return "it isn't a module file";
        ImportOptionsProvider options;
        if (!LoadNewModule(file.string(), options)) return "the loader refused it";
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

// The command that runs the rest of a command line in a mount namespace of
// its own (root may make one directly, anyone else within a user namespace);
// empty when the system allows neither, or the folder can't be shut in there.
std::string ShutInCommand(const test::ScratchDir& dir, const fs::path& script) {
    const fs::path inside = dir / "inside";
    const std::string check = "touch " + ShellQuoted((inside / "in").string()) + " && ! touch " +
                              ShellQuoted((dir / "out").string()) + " 2>/dev/null";
    for (const char* unshare : {"unshare --mount", "unshare --user --map-root-user --mount"}) {
        if (geteuid() != 0 && std::string(unshare) == "unshare --mount") continue;
        fs::create_directories(inside);
        std::string output;
        const bool shut = test::RunCommand(std::string(unshare) + " sh " + ShellQuoted(script.string()) + " " +
                                               ShellQuoted(inside.string()) + " sh -c " + ShellQuoted(check),
                                           output) == 0 &&
                          fs::exists(inside / "in") && !fs::exists(dir / "out");
        fs::remove_all(inside);
        fs::remove(dir / "out");
        if (shut) return unshare;
    }
    return {};
}

// The process of the program in the process group the test started.
std::optional<pid_t> ProgramProcess(pid_t group) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream in(entry.path() / "stat");
        std::string stat((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        const size_t close = stat.rfind(')');
        if (close == std::string::npos || stat.find("(sondrel)") == std::string::npos) continue;
        std::istringstream rest(stat.substr(close + 2));
        char state = 0;
        pid_t parent = 0, processGroup = 0;
        rest >> state >> parent >> processGroup;
        if (processGroup == group) return std::atoi(name.c_str());
    }
    return std::nullopt;
}

std::string Backtrace(pid_t process) {
    std::string output;
    if (test::RunCommand("command -v gdb", output) != 0) return "(no gdb for a backtrace)";
    test::RunCommand("timeout 60 gdb -p " + std::to_string(process) + " -batch -ex 'thread apply all bt'", output);
    return LastLines(output, 80);
}

// One seed's storm on an X server of its own, with the program and all it
// may write in a scratch folder ("box").
class MonkeyRun {
public:
    MonkeyRun(uint64_t seed, double seconds) : seed_(seed), seconds_(seconds) {}

    // Empty when the storm found nothing wrong; otherwise what went wrong,
    // how to replay it and the end of the program's stderr.
    std::string Run();
    // Set when the system can't shut the program in its folder.
    std::string skipped;

private:
    bool Prepare();
    std::string Start();
    std::string AfterBatch();
    bool Answering(unsigned long window);
    std::string Ended(int exitCode);
    std::string CheckFiles();
    std::string Report(const std::string& what) const;
    std::string ProgramLog() const { return TextFrom(dir_ / "program.log", logStart_); }

    uint64_t seed_;
    double seconds_;
    test::ScratchDir dir_;
    fs::path box_ = dir_ / "box";
    std::string shutIn_;
    std::unique_ptr<e2e::XSession> x_;
    std::unique_ptr<ChildProcess> program_;
    unsigned long window_ = 0;
    std::streamoff logStart_ = 0;
    int batch_ = -1;
    std::string lastBatch_;
    int events_ = 0, restarts_ = 0, modulesLoaded_ = 0;
    std::map<fs::path, std::pair<uintmax_t, fs::file_time_type>> loaded_;
};

bool MonkeyRun::Prepare() {
    const fs::path script = dir_ / "shut_in.sh";
    std::ofstream(script) << kShutInScript;
    shutIn_ = ShutInCommand(dir_, script);
    if (shutIn_.empty()) {
        skipped = "the program can't be shut in its folder here (unshare --mount is not allowed)";
        return false;
    }
    const fs::path app = box_ / "app";
    fs::create_directories(app);
    fs::create_directories(box_ / "home");
    fs::create_directories(box_ / "config");
    const fs::path built = test::BinaryDir();
    for (const char* name : {"sondrel", "modfont.png", "readme.txt", "demo.sdrltk"})
        fs::copy_file(built / name, app / name);
    fs::copy(built / "skins", app / "skins", fs::copy_options::recursive);
    box_ = fs::canonical(box_);
    x_ = std::make_unique<e2e::XSession>(dir_.Path());
    return true;
}

// Starts the program on the demo song in its box and waits for its first frame.
std::string MonkeyRun::Start() {
    std::error_code error;
    logStart_ = static_cast<std::streamoff>(fs::file_size(dir_ / "program.log", error));
    if (error) logStart_ = 0;
    const auto quoted = [](const fs::path& path) { return ShellQuoted(path.string()); };
    const fs::path home = box_ / "home";
    const int limit = static_cast<int>(seconds_ + 120) * 2;
    // The sanitizer build's leak checker would count the X libraries' allocations against the program.
    program_ = std::make_unique<ChildProcess>(
        "cd " + quoted(home) + " && exec env -u SDL_VIDEODRIVER ASAN_OPTIONS=detect_leaks=0 SDL_AUDIODRIVER=disk" +
        " SDL_DISKAUDIOFILE=/dev/null HOME=" + quoted(home) + " XDG_CONFIG_HOME=" + quoted(box_ / "config") +
        " timeout -k 5 " + std::to_string(limit) + " " + shutIn_ + " sh " + quoted(dir_ / "shut_in.sh") + " " +
        quoted(box_) + " " + quoted(box_ / "app" / "sondrel") + " " + quoted(box_ / "app" / "demo.sdrltk") +
        " >> " + quoted(dir_ / "program.log") + " 2>&1");
    // The title is set with the first frame.
    window_ = x_->FindWindow("^Sondrel [ *]", kStartSeconds);
    if (window_ == 0) {
        if (const auto code = program_->Wait(1))
            return "the program ended at the start with exit code " + std::to_string(*code);
        return "the program's window didn't come";
    }
    x_->Xdotool("windowfocus --sync " + std::to_string(window_));
    return {};
}

std::string MonkeyRun::Run() {
    if (!Prepare()) return {};
    if (!x_->Ready()) return "no X server: " + TextFrom(dir_ / "xvfb.log", 0);
    if (std::string failure = Start(); !failure.empty()) return Report(failure);
    const std::optional<int> lastBatch = LastBatch();
    const auto started = Clock::now();
    const auto deadline = started + std::chrono::duration<double>(seconds_);
    for (batch_ = 0; lastBatch ? batch_ <= *lastBatch : Clock::now() < deadline; ++batch_) {
        const auto batchStarted = Clock::now();
        const e2e::MonkeyBatch batch = e2e::MakeMonkeyBatch(seed_, batch_, window_);
        lastBatch_ = "windowfocus " + std::to_string(window_) + batch.xdotool;
        // xdotool stops at a command that fails, as when the window has gone.
        x_->Xdotool(lastBatch_, nullptr, 120);
        if (batch.closeWindow) x_->CloseWindow(window_);
        events_ += batch.events;
        if (std::string failure = AfterBatch(); !failure.empty()) return Report(failure);
        // A batch takes two or three seconds; much longer is worth a look.
        if (const double took = std::chrono::duration<double>(Clock::now() - batchStarted).count(); took > 10)
            std::cout << "monkey: seed " << seed_ << ", batch " << batch_ << " took " << took << " s" << std::endl;
    }
    std::cout << "monkey: seed " << seed_ << ": " << batch_ << " batches, " << events_ << " events, " << restarts_
              << " restarts, " << modulesLoaded_ << " saved modules loaded back, "
              << std::chrono::duration<double>(Clock::now() - started).count() << " s" << std::endl;
    return {};
}

std::string MonkeyRun::AfterBatch() {
    if (const auto code = program_->Wait(0)) return Ended(*code);
    if (ReportsFault(ProgramLog())) return "the program reported a fault";
    // An answered ping shows the program handling its events. The events of
    // the frame that took the ping are handled after it: a second ping waits
    // for the next frame, so that whatever the batch saves is written.
    if (!Answering(window_) || !Answering(window_)) {
        if (const auto code = program_->Wait(1)) return Ended(*code);
        if (ReportsFault(ProgramLog())) return "the program reported a fault";
        // A new window (fullscreen may bring one) that answers is no hang.
        const unsigned long window = x_->FindWindow("^Sondrel [ *]", 1);
        if (window == 0 || window == window_ || !Answering(window)) {
            const auto process = ProgramProcess(program_->Pid());
            return "the program hangs: its window doesn't answer for " + std::to_string(int(kAnswerSeconds)) +
                   " seconds\n" + (process ? Backtrace(*process) : "(the process is not to be found)");
        }
        window_ = window;
    }
    return CheckFiles();
}

// Pings of half a second, so that a program that has ended isn't waited for.
bool MonkeyRun::Answering(unsigned long window) {
    const auto deadline = Clock::now() + std::chrono::duration<double>(kAnswerSeconds);
    while (!program_->Wait(0) && Clock::now() < deadline)
        if (x_->Answers(window, 0.5)) return true;
    return false;
}

// The program ended by itself: well only with exit code 0 and no fault
// reported; then it starts again.
std::string MonkeyRun::Ended(int exitCode) {
    if (ReportsFault(ProgramLog())) return "the program reported a fault";
    if (exitCode != 0) return "the program ended with exit code " + std::to_string(exitCode);
    if (std::string failure = CheckFiles(); !failure.empty()) return failure;
    ++restarts_;
    return Start();
}

// No crash saves; every module saved loads back. A module is loaded again
// when its size or time changes.
std::string MonkeyRun::CheckFiles() {
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(box_, error); !error && it != fs::recursive_directory_iterator();
         it.increment(error)) {
        std::error_code gone;
        if (!it->is_regular_file(gone)) continue;
        const fs::path& file = it->path();
        const std::string name = file.filename().string();
        if (name.rfind("crash(", 0) == 0) return "the program left a crash save: " + file.string();
        if (!EndsWithIgnoringCase(name, kModuleExtension)) continue;
        const auto stampNow = [&] {
            return std::make_pair(fs::file_size(file, gone), fs::last_write_time(file, gone));
        };
        const auto stamp = stampNow();
        if (gone || loaded_[file] == stamp) continue;
        if (const std::string problem = ModuleProblem(file); !problem.empty()) {
            // A file still being written gets another look after the next batch.
            usleep(500000);
            if (stampNow() != stamp) continue;
            return "the module the program saved as " + file.string() + " doesn't load back: " + problem;
        }
        loaded_[file] = stamp;
        ++modulesLoaded_;
    }
    return {};
}

std::string MonkeyRun::Report(const std::string& what) const {
    std::ostringstream report;
    report << "seed " << seed_ << ", batch " << batch_ << ": " << what << "\n"
           << "replay: SONDREL_MONKEY_SEED=" << seed_ << " SONDREL_MONKEY_BATCH=" << batch_ << " "
           << (test::BinaryDir() / "e2e_tests").string() << " --gtest_filter=MonkeyTest.GivenSeeds\n"
           << "the last batch: xdotool " << lastBatch_ << "\n"
           << "the program's stderr, last lines:\n"
           << LastLines(ProgramLog(), 30);
    return report.str();
}

class MonkeyTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string found;
        if (test::RunCommand("command -v xvfb-run && command -v xdotool && command -v unshare", found) != 0)
            GTEST_SKIP() << "xvfb-run, xdotool or unshare is missing";
    }

    void TearDown() override { alarm(0); }

    // Storms one seed; a failure says how to replay it.
    void Storm(uint64_t seed, double seconds) {
        std::cout << "monkey: seed " << seed << " for " << seconds << " s" << std::endl;
        // The last resort against a hang of the test itself.
        alarm(static_cast<unsigned>(seconds + 300));
        MonkeyRun run(seed, seconds);
        const std::string failure = run.Run();
        if (!run.skipped.empty()) GTEST_SKIP() << run.skipped;
        if (!failure.empty()) ADD_FAILURE() << failure;
    }
};

class MonkeySeedTest : public MonkeyTest, public ::testing::WithParamInterface<uint64_t> {};

TEST_P(MonkeySeedTest, StormsTheProgram) {
    if (Environment("SONDREL_MONKEY_SEED") || Environment("SONDREL_MONKEY_FRESH_SECONDS"))
        GTEST_SKIP() << "other seeds are chosen";
    Storm(GetParam(), SecondsPerSeed());
}

INSTANTIATE_TEST_SUITE_P(FixedSeeds, MonkeySeedTest, ::testing::ValuesIn(kFixedSeeds));

// SONDREL_MONKEY_SEED's seeds, separated by commas.
TEST_F(MonkeyTest, GivenSeeds) {
    const auto seeds = Environment("SONDREL_MONKEY_SEED");
    if (!seeds) GTEST_SKIP() << "no SONDREL_MONKEY_SEED";
    std::istringstream list(*seeds);
    for (std::string seed; std::getline(list, seed, ',');) Storm(std::stoull(seed), SecondsPerSeed());
}

// Fresh seeds for SONDREL_MONKEY_FRESH_SECONDS in all, each for up to a minute.
TEST_F(MonkeyTest, FreshSeeds) {
    const auto total = Environment("SONDREL_MONKEY_FRESH_SECONDS");
    if (!total) GTEST_SKIP() << "no SONDREL_MONKEY_FRESH_SECONDS";
    const auto deadline = Clock::now() + std::chrono::duration<double>(std::strtod(total->c_str(), nullptr));
    const double each = Environment("SONDREL_MONKEY_SECONDS") ? SecondsPerSeed() : 60;
    std::random_device random;
    for (auto now = Clock::now(); now < deadline - std::chrono::seconds(5); now = Clock::now()) {
        const uint64_t seed = (uint64_t{random()} << 32 | random()) % 1000000000;
        Storm(seed, std::min(each, std::chrono::duration<double>(deadline - now).count()));
    }
}

}  // namespace
}  // namespace sondrel
