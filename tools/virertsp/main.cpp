#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include <glib.h>

#include "Diagnostics.hpp"
#include "Player/Features.hpp"
#include "commands/Command.hpp"
#include "commands/Completion.hpp"
#include "commands/Probe.hpp"
#include "commands/Record.hpp"
#include "commands/Report.hpp"
#include "commands/Stats.hpp"
#include "commands/Watch.hpp"

namespace {

using Virertsp::Command;

constexpr Command kCommands[] = {
    {"record", "Play a location and write its tracks to files", Virertsp::RunRecord},
    {"probe", "Show what a server says of a location, and what its tracks become", Virertsp::RunProbe},
    {"stats", "Play a location and show its reception every second", Virertsp::RunStats},
    {"report", "Write a page of what a server says and of the reception", Virertsp::RunReport},
    {"watch", "Play several locations and show a line for each", Virertsp::RunWatch},
};

void PrintHelp(std::FILE* aOut) {
    std::fprintf(aOut, "Usage:\n  virertsp COMMAND [OPTION...] URL\n  virertsp --version\n\nCommands:\n");
    for (const Command& lCommand : kCommands) {
        std::fprintf(aOut, "  %-10s %s\n", lCommand.mName, lCommand.mSummary);
    }
    std::fprintf(aOut, "\n\"virertsp COMMAND --help\" shows a command's options.\n\n%s",
                 Virertsp::ExitCodeHelp().c_str());
}

const Command* Find(const char* aName) {
    for (const Command& lCommand : kCommands) {
        if (0 == std::strcmp(aName, lCommand.mName)) { return &lCommand; }
    }
    return nullptr;
}

bool IsHelp(const std::string& aWord) {
    return "help" == aWord || "--help" == aWord || "-h" == aWord;
}

/// For the completion of shells: "--complete WORD...", see `Candidates`.
int Complete(int argc, char** argv) {
    if (argc > 3) {
        const Command* const lCommand = Find(argv[2]);
        // The command's name and the option change places.
        std::swap(argv[1], argv[2]);
        return nullptr == lCommand ? 0 : lCommand->mRun(argc - 1, argv + 1);
    }
    const std::string lTyped = argc > 2 ? argv[2] : "";
    std::string lLines;
    for (const Command& lCommand : kCommands) {
        lLines += Virertsp::Candidate(lTyped, lCommand.mName, lCommand.mSummary);
    }
    lLines += Virertsp::Candidate(lTyped, "--help", "Show the commands");
    lLines += Virertsp::Candidate(lTyped, "--version", "Show the version");
    std::fputs(lLines.c_str(), stdout);
    return Virertsp::kExitOk;
}

}  // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, "");
    // Ports and identifiers of senders come from rand(): two processes must not begin with the same values.
    std::srand(g_random_int());
    const char* const lName = argc > 1 ? argv[1] : "";
    if (const Command* const lCommand = Find(lName)) { return lCommand->mRun(argc - 1, argv + 1); }
    if (0 == std::strcmp(lName, Virertsp::kComplete)) { return Complete(argc, argv); }
    if (0 == std::strcmp(lName, "--version")) {
        std::printf("virertsp %s\n", VIRERTSP_VERSION);
        std::printf(Player::HasTLS() ? "rtsps and passwords: yes\n"
                                     : "rtsps and passwords: no, built without GnuTLS\n");
        return Virertsp::kExitOk;
    }
    const bool lHelp = IsHelp(lName);
    if (!lHelp && argc > 1) {
        Virertsp::PrintError(std::string("There is no command \"") + lName + "\"; virertsp --help lists them.");
        return Virertsp::kExitUsage;
    }
    // "help COMMAND"
    if (lHelp && argc > 2) {
        if (const Command* const lCommand = Find(argv[2])) {
            char lOption[] = "--help";
            char* lArguments[] = {argv[2], lOption, nullptr};
            return lCommand->mRun(2, lArguments);
        }
    }
    PrintHelp(lHelp ? stdout : stderr);
    return lHelp ? Virertsp::kExitOk : Virertsp::kExitUsage;
}
