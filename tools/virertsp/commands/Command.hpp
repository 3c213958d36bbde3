#pragma once

#include <string>

namespace Virertsp {

/// Exit codes, the same for every command; documented in the manual page as well.
enum ExitCode : int {
    kExitOk = 0,
    /// Something in the system: memory, sockets.
    kExitSystem = 1,
    /// The command line.
    kExitUsage = 2,
    /// The server can't be reached, or the connection broke.
    kExitNetwork = 3,
    /// The server did not answer in time, or media stopped coming.
    kExitTimeOut = 4,
    /// The server refused a request, 404 for example.
    kExitRefused = 5,
    /// What the server says can't be understood.
    kExitProtocol = 6,
    /// Nothing of the presentation can be played or written.
    kExitNothingPlayable = 7,
    /// A file can't be written.
    kExitOutput = 8,
};

/// The exit codes and their meanings, for the help.
std::string ExitCodeHelp();

/// One of the program's commands. The arguments begin with the command's own name.
struct Command {
    const char* mName;
    const char* mSummary;
    int (*mRun)(int aCount, char** aArguments);
};

}  // namespace Virertsp
