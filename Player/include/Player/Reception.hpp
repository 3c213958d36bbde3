#pragma once

#include <cstdint>

#include "Player/Time.hpp"
#include "Player/Types.hpp"

namespace Player {

/// What the reception of one track looks like right now, for tools that show it. Counters start anew
/// with every flush of the track (a start, a seek).
struct Reception {
    /// Why a track has ended; the values are those of the receiving stack's state.
    enum class End : UInt { kRunning = 0, kTimedOut = 1, kEndTime = 2, kBye = 3 };

    UInt mPacketsReceived = 0;
    /// Expected by sequence numbers, less received: negative when duplicates outnumber losses.
    SInt mPacketsLost = 0;
    /// Packets that came after one with a higher sequence number.
    UInt mPacketsReordered = 0;
    /// Packets that came when what follows them had been handed out: of no use, and counted as received and reordered.
    UInt mPacketsLate = 0;
    /// Packets dropped because one with the same index was queued.
    UInt mPacketsDuplicate = 0;
    /// Packets dropped because the session held all that it may; counted as received.
    UInt mPacketsDropped = 0;
    /// Whole datagrams of the received packets, RTP header included.
    std::uint64_t mBytes = 0;
    /// Interarrival jitter in seconds (RFC 3550 section 6.4.1).
    Time mJitter;
    /// Play time of the packet taken out last.
    Time mCurrentTime;
    /// Play time between the oldest and the newest packet still held in order.
    Time mBufferedTime;
    End mEnd = End::kRunning;

    /// Packets that the track's samples lack.
    SInt Missing() const { return mPacketsLost + static_cast<SInt>(mPacketsDropped); }
};

}  // namespace Player
