#include <clocale>
#include <cstdio>
#include <cstring>

#include "Command.hpp"
#include "Record.hpp"

namespace {

using Virertsp::Command;

constexpr Command kCommands[] = {
    {"record", "Play a location and write its tracks to files", Virertsp::RunRecord},
};

void PrintHelp(std::FILE* aOut) {
    std::fprintf(aOut, "Usage:\n  virertsp COMMAND [OPTION...] URL\n\nCommands:\n");
    for (const Command& lCommand : kCommands) {
        std::fprintf(aOut, "  %-10s %s\n", lCommand.mName, lCommand.mSummary);
    }
    std::fprintf(aOut,
                 "\n\"virertsp COMMAND --help\" shows a command's options.\n"
                 "\nExit codes:\n"
                 "  0  all went well\n"
                 "  1  the system failed\n"
                 "  2  the command line is wrong\n"
                 "  3  the server can't be reached, or the connection broke\n"
                 "  4  the server did not answer in time, or media stopped coming\n"
                 "  5  the server refused a request\n"
                 "  6  what the server says can't be understood\n"
                 "  7  nothing of the presentation can be played or written\n"
                 "  8  a file can't be written\n");
}

}  // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, "");
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
