#pragma once

#include <cstdint>

namespace Networks {

/// What a link does to the packets that pass it, in either direction. As built it does nothing.
struct Conditions {
    // Shares of the packets, 0 to 1.
    double mLoss = 0;
    /// Held back by `mHold`, so that others overtake them.
    double mReorder = 0;
    /// Arrive once more up to `kCopyLag` later.
    double mDuplicate = 0;

    // Seconds.
    double mHold = 0.03;
    double mDelay = 0;
    /// Up to so much is added to the delay. The order stays: the next packet waits for the one before it.
    double mJitter = 0;
    /// Nothing passes in [from, to), counted from the first packet.
    double mDownFrom = 0;
    double mDownTo = 0;

    /// Bits in a second; 0 for no limit.
    double mRate = 0;
    /// Bytes that may wait for their turn when the rate is limited; what comes on top is lost.
    double mQueue = 100000;

    /// The same seed gives the same fates to the same row of packets.
    std::uint32_t mSeed = 1;

    static constexpr double kCopyLag = 0.02;

    /// Sets a value by its name, as in "loss=0.05": loss, reorder, duplicate, hold, delay, jitter, down_from,
    /// down_to, rate, queue, seed. Throws `std::runtime_error`.
    void Set(const char* aAssignment);
};

}  // namespace Networks
