#pragma once
// Hardware faults as exceptions: a SIGSEGV, SIGBUS, SIGFPE or SIGILL raised
// while the guarded code runs ends that code and surfaces as an Exception
// thrown from here, so that the crash save still runs. Faults anywhere else
// keep their default action.

#include <functional>

namespace sondrel {

// Runs body on the calling thread; a fault inside it throws Exception naming
// the signal. What body had on its stack is abandoned, not unwound.
void RunTranslatingFaults(const std::function<void()>& body);

}  // namespace sondrel
