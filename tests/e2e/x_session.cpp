#include "e2e/x_session.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "test_support.h"

namespace sondrel::e2e {

namespace {

using Clock = std::chrono::steady_clock;

// A window that goes while it is read is no reason to end the test program.
int IgnoreXError(Display*, XErrorEvent*) { return 0; }

}  // namespace

std::string ShellQuoted(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

ChildProcess::ChildProcess(const std::string& commandLine, bool holdStdin) {
    int pipeEnds[2] = {-1, -1};
    if (holdStdin && pipe2(pipeEnds, O_CLOEXEC) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
        setpgid(0, 0);
        const int input = holdStdin ? pipeEnds[0] : open("/dev/null", O_RDONLY);
        dup2(input, STDIN_FILENO);
        execl("/bin/sh", "sh", "-c", commandLine.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    if (pid_ > 0) setpgid(pid_, pid_);
    if (holdStdin) {
        close(pipeEnds[0]);
        stdin_ = pipeEnds[1];
    }
}

ChildProcess::~ChildProcess() {
    CloseStdin();
    if (pid_ <= 0 || exitCode_) return;
    kill(-pid_, SIGTERM);
    if (Wait(3)) return;
    kill(-pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

void ChildProcess::CloseStdin() {
    if (stdin_ >= 0) close(stdin_);
    stdin_ = -1;
}

std::optional<int> ChildProcess::Wait(double seconds) {
    if (pid_ <= 0) return -1;
    const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
    while (!exitCode_) {
        int status = 0;
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            break;
        }
        if (Clock::now() >= deadline) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return exitCode_;
}

bool WaitUntil(const std::function<bool()>& condition, double seconds) {
    const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
    for (;;) {
        if (condition()) return true;
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

XSession::XSession(const std::filesystem::path& scratch, const std::string& screen) {
    // Two servers started at once may pick the same display number, and the
    // loser's xvfb-run gives up: then another try.
    const std::filesystem::path address = scratch / "x-display";
    for (int attempt = 0; attempt < 3 && !ready_; ++attempt) {
        const std::string part = ShellQuoted(address.string() + ".part");
        const std::string tell = "printf '%s\\n%s\\n' \"$DISPLAY\" \"$XAUTHORITY\" > " + part + " && mv " + part +
                                 " " + ShellQuoted(address.string()) + " && exec cat > /dev/null";
        const std::string log = ShellQuoted((scratch / "xvfb.log").string());
        server_ = std::make_unique<ChildProcess>(
            "exec timeout -k 5 300 xvfb-run -a -s " + ShellQuoted("-screen 0 " + screen) + " sh -c " + ShellQuoted(tell) + " >> " + log +
                " 2>&1",
            true);
        const auto told = [&] { return std::filesystem::exists(address); };
        WaitUntil([&] { return told() || server_->Wait(0).has_value(); }, 20);
        ready_ = told();
    }
    if (!ready_) return;
    std::ifstream in(address);
    std::string display, authority;
    std::getline(in, display);
    std::getline(in, authority);
    setenv("DISPLAY", display.c_str(), 1);
    setenv("XAUTHORITY", authority.c_str(), 1);
}

XSession::~XSession() {
    // Closing its input ends the command xvfb-run waits for; it then stops the server.
    if (server_) {
        server_->CloseStdin();
        server_->Wait(10);
    }
    unsetenv("DISPLAY");
    unsetenv("XAUTHORITY");
}

bool XSession::Xdotool(const std::string& arguments, std::string* output, double seconds) {
    std::string text;
    const int code = test::RunCommand("timeout " + std::to_string(seconds) + " xdotool " + arguments, text);
    if (output) *output = text;
    return code == 0;
}

unsigned long XSession::FindWindow(const std::string& namePattern, double seconds) {
    std::string found;
    if (!Xdotool("search --sync --name " + ShellQuoted(namePattern), &found, seconds)) return 0;
    return std::strtoul(found.c_str(), nullptr, 10);
}

std::string XSession::WindowName(unsigned long window) {
    std::string name;
    if (!Xdotool("getwindowname " + std::to_string(window), &name)) return {};
    if (!name.empty() && name.back() == '\n') name.pop_back();
    return name;
}

bool XSession::CloseWindow(unsigned long window) {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) return false;
    XSetErrorHandler(IgnoreXError);
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    const bool sent = XSendEvent(display, window, False, NoEventMask, &event) != 0;
    XCloseDisplay(display);
    return sent;
}

bool XSession::Answers(unsigned long window, double seconds) {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) return false;
    XSetErrorHandler(IgnoreXError);
    // The answer comes back to the root window, as to a window manager.
    const Window root = DefaultRootWindow(display);
    XSelectInput(display, root, SubstructureNotifyMask);
    const Atom protocols = XInternAtom(display, "WM_PROTOCOLS", False);
    const Atom ping = XInternAtom(display, "_NET_WM_PING", False);
    static long pings = 0;
    const long stamp = ++pings;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = protocols;
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(ping);
    event.xclient.data.l[1] = stamp;
    event.xclient.data.l[2] = static_cast<long>(window);
    bool answered = false;
    if (XSendEvent(display, window, False, NoEventMask, &event) != 0) {
        XFlush(display);
        answered = WaitUntil(
            [&] {
                while (XPending(display) > 0) {
                    XEvent reply;
                    XNextEvent(display, &reply);
                    if (reply.type == ClientMessage && reply.xclient.message_type == protocols &&
                        reply.xclient.data.l[0] == static_cast<long>(ping) && reply.xclient.data.l[1] == stamp)
                        return true;
                }
                return false;
            },
            seconds);
    }
    XCloseDisplay(display);
    return answered;
}

std::optional<WindowPicture> XSession::Capture(unsigned long window) {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) return std::nullopt;
    XSetErrorHandler(IgnoreXError);
    std::optional<WindowPicture> picture;
    XWindowAttributes attributes{};
    XImage* image = nullptr;
    if (XGetWindowAttributes(display, window, &attributes))
        image = XGetImage(display, window, 0, 0, attributes.width, attributes.height, AllPlanes, ZPixmap);
    if (image != nullptr) {
        if (image->red_mask == 0xFF0000 && image->green_mask == 0xFF00 && image->blue_mask == 0xFF) {
            picture.emplace();
            picture->width = attributes.width;
            picture->height = attributes.height;
            picture->rgb.reserve(static_cast<size_t>(attributes.width) * attributes.height);
            for (int y = 0; y < attributes.height; ++y)
                for (int x = 0; x < attributes.width; ++x)
                    picture->rgb.push_back(static_cast<uint32_t>(XGetPixel(image, x, y) & 0xFFFFFF));
        }
        XDestroyImage(image);
    }
    XCloseDisplay(display);
    return picture;
}

}  // namespace sondrel::e2e
