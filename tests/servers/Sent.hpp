#pragma once

#include <string>

/// From now on every RTP packet that this process hands to a socket for datagrams is written to the file, a line each:
/// payload type, sequence number, mark (0 or 1). Ends the process when the file can't be written.
void WriteDownWhatIsSent(const std::string& aFile);
