#pragma once
// What the end-to-end tests drive the real program with: a private X server
// per test (xvfb-run), child processes that can't outlive the test, xdotool
// for keys and clicks, and the window's pixels read back from the server.

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sondrel::e2e {

// A shell command line in a process group of its own; the whole group is
// killed when the object goes.
class ChildProcess {
public:
    // With holdStdin the child reads from a pipe that stays open until
    // CloseStdin (or the end of this object, or of the test process).
    explicit ChildProcess(const std::string& commandLine, bool holdStdin = false);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The exit code once the child has ended within `seconds` (-1 when it
    // was killed by a signal); nullopt while it still runs.
    std::optional<int> Wait(double seconds);
    void CloseStdin();
    // The shell's process id, which is also the process group's.
    pid_t Pid() const { return pid_; }

private:
    pid_t pid_ = -1;
    int stdin_ = -1;
    std::optional<int> exitCode_;
};

// text in single quotes for the shell.
std::string ShellQuoted(const std::string& text);

// Polls condition every 20 ms until it holds or `seconds` have passed.
bool WaitUntil(const std::function<bool()>& condition, double seconds);

// A window's pixels, each 0xRRGGBB.
struct WindowPicture {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> rgb;
    uint32_t At(int x, int y) const { return rgb[static_cast<size_t>(y) * width + x]; }
};

// An X server of its own (1024x768, 24 bits, unless given another screen
// as WIDTHxHEIGHTxDEPTH) for one test, started by
// xvfb-run -a; DISPLAY and XAUTHORITY of this process point at it while it
// lives. Its server and everything run on it end with it.
class XSession {
public:
    explicit XSession(const std::filesystem::path& scratch, const std::string& screen = "1024x768x24");
    ~XSession();
    XSession(const XSession&) = delete;
    XSession& operator=(const XSession&) = delete;

    bool Ready() const { return ready_; }
    // Runs xdotool with the arguments, bounded by `seconds`; false when it
    // failed or timed out. Its output (stdout and stderr) goes to output.
    bool Xdotool(const std::string& arguments, std::string* output = nullptr, double seconds = 10);
    // The first window whose name matches the pattern, waiting up to `seconds`; 0 when none came.
    unsigned long FindWindow(const std::string& namePattern, double seconds);
    std::string WindowName(unsigned long window);
    // Asks the window to close, as a window manager does for a click on its close box.
    bool CloseWindow(unsigned long window);
    // Whether the program behind the window still handles its events: it
    // answers a ping (_NET_WM_PING, as window managers send to tell a hung
    // program) within `seconds`.
    bool Answers(unsigned long window, double seconds);
    // The window's contents; nullopt when it can't be read (it has gone).
    std::optional<WindowPicture> Capture(unsigned long window);

private:
    std::unique_ptr<ChildProcess> server_;
    bool ready_ = false;
};

}  // namespace sondrel::e2e
