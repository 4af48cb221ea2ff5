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

}  // namespace sondrel
