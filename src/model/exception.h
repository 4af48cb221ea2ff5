#pragma once
// The program's failures: one small tree rooted at Exception. Every failure
// carries the text that is shown to the user or written to the log.

#include <stdexcept>
#include <string>

namespace sondrel {

class Exception : public std::runtime_error {
public:
    explicit Exception(const std::string& message) : std::runtime_error(message) {}
    const std::string Message() const { return what(); }
};

// A stream could not be opened, read or written.
class FileIOException : public Exception {
public:
    using Exception::Exception;
};

// A library, or one of its functions, could not be loaded.
class LibraryLoadException : public Exception {
public:
    using Exception::Exception;
};

// Malformed text or blocks; the message names the failing operation,
// as in "ParseString(): Failed".
class ParseException : public Exception {
public:
    using Exception::Exception;
};

// A state the program should never reach.
class InternalException : public Exception {
public:
    using Exception::Exception;
};

// A failure's message as the user reads it under "Couldn't load module." and
// the like: the name of the operation that failed ("DetectFileKind(): ") is
// left out of each line, the rest stands.
std::string UserReason(const std::exception& error);
// message, then on the next line the failure's UserReason.
std::string WithReason(const std::string& message, const std::exception& error);

}  // namespace sondrel
