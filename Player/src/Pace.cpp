#include "Player/Pace.hpp"

namespace Player {

namespace {

/// A look that brings so many packets could as well come later ...
constexpr unsigned kFew = 24;
/// ... and one that brings so many should come sooner: a UDP socket holds about 180 of full size.
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
