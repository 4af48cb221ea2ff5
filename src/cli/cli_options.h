#pragma once
// A small argument reader for the headless tool's subcommands.

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sondrel::cli {

// A mistake in the command line: reported with the subcommand's usage, exit code 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A whole number in [low, high] from text, or a UsageError naming the option.
int ParseWholeNumber(const std::string& text, int low, int high, const std::string& option);

class Arguments {
public:
    // valueOptions take a value ("--loops 3" or "--loops=3"); flags do not.
    Arguments(const std::vector<std::string>& args, const std::vector<std::string>& valueOptions,
              const std::vector<std::string>& flags);

    const std::vector<std::string>& Positional() const { return positional_; }
    bool Has(const std::string& option) const { return values_.count(option) > 0; }
    // The last value given for the option; Values gives every one, in order.
    std::optional<std::string> Value(const std::string& option) const;
    std::vector<std::string> Values(const std::string& option) const;
    // The option's value as an integer within [low, high], or fallback when absent.
    int Int(const std::string& option, int fallback, int low, int high) const;
    double Double(const std::string& option, double fallback, double low, double high) const;

private:
    std::vector<std::string> positional_;
    std::map<std::string, std::vector<std::string>> values_;
};

}  // namespace sondrel::cli
