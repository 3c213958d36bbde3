#pragma once

namespace Virertsp {

/// From here on the first SIGINT or SIGTERM ends the recording, and the second the program.
void CatchInterrupts();
/// Whether there was one.
bool Interrupted();

/// While it lives, the process waits for a server: an interrupt that comes, or has come, ends it within a second with
/// this exit code. What has been written to files must be complete.
class ImpatientWait {
public:
    explicit ImpatientWait(int aExitCode);
    ImpatientWait(const ImpatientWait&) = delete;
    ImpatientWait& operator=(const ImpatientWait&) = delete;
    ~ImpatientWait();
};

}  // namespace Virertsp
