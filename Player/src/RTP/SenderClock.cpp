#include "RTP/SenderClock.hpp"

#include "RTP/NTPTime.hpp"

namespace Player::RTP {

void SenderClock::Update(std::uint64_t aNTPTime, UInt aRTPTime, Time aArrival, UInt aTimeRes) {
    if (IsKnown()) {
        // The server's NTP clock counts only in the first report; later ones advance it by their RTP time,
        // which keeps the mapping free of server clock jumps.
        const SInt lTicks = static_cast<SInt>(aRTPTime - mRTPTime);
        mNTPTime += static_cast<std::uint64_t>(ToNTPRes(lTicks, aTimeRes));
    } else {
        mNTPTime = aNTPTime;
    }
    if (aRTPTime < mRTPTime) { ++mRTPCycles; }
    mRTPTime = aRTPTime;
    mArrival = ToShortNTP(aArrival);
}

UInt SenderClock::Age(const Time& aNow) const {
    const UInt lNow = ToShortNTP(aNow);
    return mArrival < lNow ? lNow - mArrival : 0;
}

}  // namespace Player::RTP
