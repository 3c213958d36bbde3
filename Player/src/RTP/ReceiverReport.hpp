#pragma once

#include "Player/Types.hpp"

namespace Player::RTP {

/// What an RTCP receiver report with one report block holds (RFC 3550, section 6.4.2).
struct ReceiverReport {
    static constexpr UInt kSize = 32;

    UInt mLocalSSRC = 0;
    /// The source that is reported on.
    UInt mSourceSSRC = 0;
    /// In 1 / 256 of the packets expected since the last report.
    Byte mFractionLost = 0;
    /// Since the start of play, within `kMinLost` and `kMaxLost`.
    SInt mCumulativeLost = 0;
    unsigned short mSeqCycles = 0;
    unsigned short mHighestSeq = 0;
    /// In timestamp units.
    UInt mJitter = 0;
    /// The middle 32 bits of the last sender report's NTP time; 0 without one.
    UInt mLastSR = 0;
    /// Units of 1 / 65536 s since the last sender report.
    UInt mDelaySinceLastSR = 0;

    /// Writes `kSize` bytes.
    void Write(Byte* aDst) const;
};

/// What the 24 bits of the report hold.
constexpr SInt kMinLost = -0x800000;
constexpr SInt kMaxLost = 0x7FFFFF;

/// Expected less received, clamped to what the report holds.
SInt CumulativeLost(UInt aExpected, UInt aReceived);

/// The losses since the last report that asked.
class LossInterval {
public:
    /// The fraction lost, in 1 / 256, since the last call; 0 when more packets arrived than expected, and
    /// also when none arrived: 256 does not fit its 8 bits.
    Byte Advance(UInt aExpected, UInt aReceived);

private:
    UInt mExpectedPrior = 0;
    UInt mReceivedPrior = 0;
};

}  // namespace Player::RTP
