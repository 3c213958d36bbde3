#include "commands/Command.hpp"

#include "Player/String.hpp"

namespace Virertsp {

namespace {

struct Meaning {
    ExitCode mCode;
    const char* mWords;
};

constexpr Meaning kMeanings[] = {
    {kExitOk, "all went well"},
    {kExitSystem, "the system failed"},
    {kExitUsage, "the command line is wrong"},
    {kExitNetwork, "the server can't be reached, or the connection broke"},
    {kExitTimeOut, "the server did not answer in time, or media stopped coming"},
    {kExitRefused, "the server refused a request"},
    {kExitProtocol, "what the server says can't be understood"},
    {kExitNothingPlayable, "nothing of the presentation can be played or written"},
    {kExitOutput, "a file can't be written"},
};

}  // namespace

std::string ExitCodeHelp() {
    std::string lHelp = "Exit codes:\n";
    for (const Meaning& lMeaning : kMeanings) {
        lHelp += Player::StringWithFormat("  %d  %s\n", lMeaning.mCode, lMeaning.mWords);
    }
    return lHelp;
}

}  // namespace Virertsp
