#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <glib.h>

#include "commands/Command.hpp"
#include "commands/Probe.hpp"
#include "commands/Record.hpp"
#include "commands/Stats.hpp"

namespace {

using Virertsp::Command;

constexpr Command kCommands[] = {
    {"record", "Play a location and write its tracks to files", Virertsp::RunRecord},
    {"probe", "Tell what a server says of a location, and what its tracks become", Virertsp::RunProbe},
    {"stats", "Play a location and show its reception every second", Virertsp::RunStats},
};

void PrintHelp(std::FILE* aOut) {
    std::fprintf(aOut, "Usage:\n  virertsp COMMAND [OPTION...] URL\n\nCommands:\n");
    for (const Command& lCommand : kCommands) {
        std::fprintf(aOut, "  %-10s %s\n", lCommand.mName, lCommand.mSummary);
    }
    std::fprintf(aOut, "\n\"virertsp COMMAND --help\" shows a command's options.\n\n%s",
                 Virertsp::ExitCodeHelp().c_str());
}

}  // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, "");
    // Ports and identifiers of senders come from rand(): two processes must not begin with the same.
    std::srand(g_random_int());
    const char* const lName = argc > 1 ? argv[1] : "";
    for (const Command& lCommand : kCommands) {
        if (0 == std::strcmp(lName, lCommand.mName)) { return lCommand.mRun(argc - 1, argv + 1); }
    }
    if (0 == std::strcmp(lName, "--version")) {
        std::printf("virertsp %s\n", VIRERTSP_VERSION);
        return Virertsp::kExitOk;
    }
    const bool lHelp = 0 == std::strcmp(lName, "--help") || 0 == std::strcmp(lName, "-h");
    if (!lHelp && argc > 1) { std::fprintf(stderr, "virertsp: there is no command \"%s\"\n\n", lName); }
    PrintHelp(lHelp ? stdout : stderr);
    return lHelp ? Virertsp::kExitOk : Virertsp::kExitUsage;
}
