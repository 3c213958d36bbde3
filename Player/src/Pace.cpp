#include "Player/Pace.hpp"

#include <algorithm>

namespace Player {

namespace {

/// A look that brings this many packets is worth its cost: the next one comes later as long as it brings no more.
constexpr unsigned kEnough = 48;
/// A look that brings this many should have come sooner: a UDP socket holds about 180 of full size, and a picture's
/// packets come all at once. The next one comes when they would have been enough.
constexpr unsigned kMany = 80;

}  // namespace

std::chrono::milliseconds Pace::Next(unsigned aPackets, bool aMediaWaits) {
    const auto lLongest = aMediaWaits ? kLongestForWaiting : kLongest;
    mWait = std::min(mWait, lLongest);
    const auto lWait = static_cast<unsigned>(mWait.count());
    // A look takes in a part of what has come.
    if (aMediaWaits && aPackets >= kMany) { return std::chrono::milliseconds::zero(); }
    if (aPackets >= kMany) {
        mWait = std::max(kShortest, mWait * kEnough / aPackets);
    } else if (aPackets * (lWait + 1) < kEnough * lWait && mWait < lLongest) {
        ++mWait;
    }
    return mWait;
}

}  // namespace Player
