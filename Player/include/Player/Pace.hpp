#pragma once

#include <chrono>

namespace Player {

/// How long to wait between two looks at the network: long enough that a look is worth its cost, short enough
/// that the sockets' buffers never fill up.
class Pace {
public:
    static constexpr std::chrono::milliseconds kShortest{1};
    static constexpr std::chrono::milliseconds kLongest{20};
    /// For media that waits at the sender until it is read.
    static constexpr std::chrono::milliseconds kLongestForWaiting{40};

    /// `aPackets`: how many packets came since the last call. `aMediaWaits`: what is not read yet waits at the sender,
    /// so that it need not be read soon; 0 then means that more may be there already.
    std::chrono::milliseconds Next(unsigned aPackets, bool aMediaWaits = false);

private:
    std::chrono::milliseconds mWait = kShortest;
};

}  // namespace Player
