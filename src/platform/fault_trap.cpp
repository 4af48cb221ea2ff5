#include "platform/fault_trap.h"

#include <setjmp.h>
#include <signal.h>

#include <csignal>
#include <string>
#include <vector>

#include "model/exception.h"

namespace sondrel {

namespace {

constexpr int kFaultSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};
// Room to run the handler when the fault was a stack overflow.
constexpr std::size_t kHandlerStackBytes = 64 * 1024;

sigjmp_buf* activePoint = nullptr;
volatile sig_atomic_t caughtSignal = 0;

const char* SignalName(int signal) {
    switch (signal) {
        case SIGSEGV: return "SIGSEGV (access violation)";
        case SIGBUS: return "SIGBUS (bus error)";
        case SIGFPE: return "SIGFPE (arithmetic fault)";
        case SIGILL: return "SIGILL (illegal instruction)";
        default: return "unknown signal";
    }
}

extern "C" void OnFault(int signal) {
    if (activePoint) {
        caughtSignal = signal;
        siglongjmp(*activePoint, 1);
    }
    // Not inside guarded code: die as the signal would have made us.
    std::signal(signal, SIG_DFL);
    raise(signal);
}

void InstallHandlers() {
    static bool installed = false;
    if (installed) return;
    installed = true;
    static std::vector<char> handlerStack(kHandlerStackBytes);
    stack_t stack{};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    sigaltstack(&stack, nullptr);

    struct sigaction action {};
    action.sa_handler = &OnFault;
    action.sa_flags = SA_ONSTACK | SA_NODEFER;
    sigemptyset(&action.sa_mask);
    for (int signal : kFaultSignals) sigaction(signal, &action, nullptr);
}

}  // namespace

void RunTranslatingFaults(const std::function<void()>& body) {
    InstallHandlers();
    sigjmp_buf point;
    sigjmp_buf* const previous = activePoint;
    if (sigsetjmp(point, 1) != 0) {
        activePoint = previous;
        throw Exception(std::string("Hardware fault: ") + SignalName(caughtSignal));
    }
    activePoint = &point;
    try {
        body();
    } catch (...) {
        activePoint = previous;
        throw;
    }
    activePoint = previous;
}

}  // namespace sondrel
