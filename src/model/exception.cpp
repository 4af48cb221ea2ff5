#include "model/exception.h"

#include <cctype>

namespace sondrel {

namespace {

// The length of a leading "Name(): " or "Class::Name(): ", 0 when the line has none.
size_t OperationPrefix(const std::string& line) {
    size_t at = 0;
    while (at < line.size() && (std::isalnum(static_cast<unsigned char>(line[at])) || line[at] == '_' || line[at] == ':'))
        ++at;
    if (at == 0 || line.compare(at, 4, "(): ") != 0) return 0;
    return at + 4;
}

}  // namespace

std::string UserReason(const std::exception& error) {
    const std::string message = error.what();
    std::string reason;
    size_t start = 0;
    while (start <= message.size()) {
        size_t end = message.find('\n', start);
        if (end == std::string::npos) end = message.size();
        const std::string line = message.substr(start, end - start);
        if (!reason.empty()) reason += '\n';
        reason += line.substr(OperationPrefix(line));
        start = end + 1;
    }
    return reason;
}

std::string WithReason(const std::string& message, const std::exception& error) {
    const std::string reason = UserReason(error);
    return reason.empty() ? message : message + "\n" + reason;
}

}  // namespace sondrel
