// sondrel-cli: the tracker's engine without a window. Each subcommand lives
// in a command_*.cpp file of its own and registers itself.

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "cli/cli_common.h"
#include "model/exception.h"

namespace sondrel::cli {
namespace {

void PrintOverview(std::FILE* out) {
    std::fprintf(out, "usage: sondrel-cli COMMAND [ARGS]\n\nCommands:\n");
    auto commands = Commands();
    std::stable_sort(commands.begin(), commands.end(),
                     [](const Command& a, const Command& b) { return a.order < b.order; });
    for (const auto& command : commands)
        std::fprintf(out, "  %-12s%s\n", command.name.c_str(), command.summary.c_str());
    std::fprintf(out, "\n'sondrel-cli COMMAND --help' tells more.\n");
}

int Run(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) {
        PrintOverview(stderr);
        return kExitUsage;
    }
    if (args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        PrintOverview(stdout);
        return kExitOk;
    }
    for (const auto& command : Commands()) {
        if (args[0] != command.name) continue;
        std::vector<std::string> rest(args.begin() + 1, args.end());
        for (const auto& arg : rest) {
            if (arg == "--help" || arg == "-h") {
                std::printf("%s%s", command.usage.c_str(), kImportHelp);
                return kExitOk;
            }
        }
        try {
            return command.run(rest);
        } catch (const UsageError& e) {
            std::fprintf(stderr, "sondrel-cli %s: %s\n%s", command.name.c_str(), e.what(), command.usage.c_str());
            return kExitUsage;
        } catch (const Failure& f) {
            std::fprintf(stderr, "sondrel-cli: %s\n  %s\n", f.message.c_str(), f.reason.c_str());
            return kExitFailure;
        } catch (const Exception& e) {
            std::fprintf(stderr, "sondrel-cli: %s\n", e.what());
            return kExitFailure;
        }
    }
    std::fprintf(stderr, "sondrel-cli: unknown command \"%s\"\n", args[0].c_str());
    PrintOverview(stderr);
    return kExitUsage;
}

}  // namespace
}  // namespace sondrel::cli

int main(int argc, char** argv) { return sondrel::cli::Run(argc, argv); }
