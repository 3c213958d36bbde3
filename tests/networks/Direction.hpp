#pragma once

#include <cstdint>
#include <optional>
#include <queue>
#include <random>
#include <vector>

#include "Conditions.hpp"

namespace Networks {

using Packet = std::vector<std::uint8_t>;

/// One way of a link: takes packets and gives them back when they are due, if ever. Knows no clock and no
/// network: times are seconds since the first packet and come in as arguments, never decreasing.
class Direction {
public:
    /// What befell a packet.
    struct Fate {
        bool mIsLost = false;
        bool mIsHeld = false;
        bool mIsCopied = false;
    };

    /// The ways of one link differ in their number, so that they do not share their fates.
    Direction(const Conditions& aConditions, unsigned aNumber);

    Fate Take(const Packet& aPacket, double aNow);
    /// When the next packet is due; nothing when there is none.
    std::optional<double> NextDue() const;
    /// The next packet if it is due.
    std::optional<Packet> Give(double aNow);

private:
    struct Waiting {
        double mDue;
        /// Packets that are due together keep their order.
        std::uint64_t mNumber;
        Packet mPacket;

        bool operator<(const Waiting& aOther) const {
            return mDue != aOther.mDue ? mDue > aOther.mDue : mNumber > aOther.mNumber;
        }
    };

    /// In [0, 1).
    double Draw();
    bool IsDown(double aNow) const;
    bool IsFull(double aNow) const;
    void Send(const Packet& aPacket, double aDue);

    Conditions mConditions;
    std::mt19937 mRandom;
    std::priority_queue<Waiting> mWaiting;
    std::uint64_t mSent = 0;
    /// When the packets taken so far have left the sender's end.
    double mBusyUntil = 0;
    /// When the last packet in order arrives.
    double mLastDue = 0;
};

}  // namespace Networks
