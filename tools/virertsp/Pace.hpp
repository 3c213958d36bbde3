#pragma once

#include <chrono>

namespace Virertsp {

/// How long to wait between two looks at the network: long enough that a look is worth its cost, short enough
/// that the sockets' buffers never fill up.
class Pace {
public:
    static constexpr std::chrono::milliseconds kShortest{1};
    static constexpr std::chrono::milliseconds kLongest{10};

    /// `aPackets`: how many packets came since the last call.
    std::chrono::milliseconds Next(unsigned aPackets);

private:
    std::chrono::milliseconds mWait = kShortest;
};

}  // namespace Virertsp
