#include "RTP/ReceiverReport.hpp"

#include <cstdint>

#include "BigEndian.hpp"
#include "Player/Mem.hpp"

namespace Player::RTP {

//  0                   1                   2                   3
//  0 1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 7 8 9 0 1
// +-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+
// |V=2|P|  RC=1   |   PT=RR=201   |           length 7            |  0
// |                     SSRC of packet sender                     |  4
// |                        SSRC of source                         |  8
// | fraction lost |       cumulative number of packets lost       | 12
// |   sequence number cycles      |   highest sequence number     | 16
// |                      interarrival jitter                      | 20
// |                         last SR (LSR)                         | 24
// |                   delay since last SR (DLSR)                  | 28
// +-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+
void ReceiverReport::Write(Byte* aDst) const {
    aDst[0] = 0x81;
    aDst[1] = 201;
    BigEndian::Write16(aDst + 2, kSize / 4 - 1);
    BigEndian::Write32(aDst + 4, mLocalSSRC);
    BigEndian::Write32(aDst + 8, mSourceSSRC);
    BigEndian::Write32(aDst + 12, static_cast<UInt>(mCumulativeLost));
    aDst[12] = mFractionLost;  // over the upper 8 bits of the count, of which 24 bits are sent
    BigEndian::Write16(aDst + 16, mSeqCycles);
    BigEndian::Write16(aDst + 18, mHighestSeq);
    BigEndian::Write32(aDst + 20, mJitter);
    BigEndian::Write32(aDst + 24, mLastSR);
    BigEndian::Write32(aDst + 28, mDelaySinceLastSR);
}

SInt CumulativeLost(UInt aExpected, UInt aReceived) {
    const SInt lLost = static_cast<SInt>(aExpected - aReceived);
    return Util::Max(kMinLost, Util::Min(kMaxLost, lLost));
}

Byte LossInterval::Advance(UInt aExpected, UInt aReceived) {
    // A new base makes the expected count begin anew: the interval is negative then.
    const SInt lExpected = static_cast<SInt>(aExpected - mExpectedPrior);
    const std::int64_t lLost = std::int64_t{lExpected} - (aReceived - mReceivedPrior);
    mExpectedPrior = aExpected;
    mReceivedPrior = aReceived;
    return lLost <= 0 ? Byte{0} : static_cast<Byte>(lLost * 256 / lExpected);
}

}  // namespace Player::RTP
