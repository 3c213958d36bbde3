#include "Player/Pace.hpp"

namespace Player {

namespace {

/// After a look that brings fewer than this many packets the next may come later ...
constexpr unsigned kFew = 24;
/// ... and after one that brings this many it should come sooner: a UDP socket holds about 180 of full size.
constexpr unsigned kMany = 64;

}  // namespace

std::chrono::milliseconds Pace::Next(unsigned aPackets) {
    if (aPackets >= kMany) {
        mWait = kShortest;
    } else if (aPackets < kFew && mWait < kLongest) {
        ++mWait;
    }
    return mWait;
}

}  // namespace Player
