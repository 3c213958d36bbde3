#pragma once

#include <cstdint>

#include "Player/Time.hpp"
#include "Player/Types.hpp"

namespace Player::RTP {

/// The server's clock as its sender reports give it: an NTP time and the RTP time of the same moment.
class SenderClock {
public:
    /// Takes a report. `aNTPTime`: 32.32 fixed point; `aTimeRes`: the track's clock rate in Hz.
    void Update(std::uint64_t aNTPTime, UInt aRTPTime, Time aArrival, UInt aTimeRes);

    bool IsKnown() const { return 0 != mNTPTime; }
    std::uint64_t NTPTime() const { return mNTPTime; }
    /// Counts the wraps of the reports' own RTP times.
    std::uint64_t RTPTimeExt() const { return static_cast<std::uint64_t>(mRTPCycles) << 32 | mRTPTime; }
    /// The middle 32 bits of the NTP time (LSR of a receiver report).
    UInt ShortNTPTime() const { return static_cast<UInt>(mNTPTime >> 16); }
    /// Units of 1 / 65536 s since the last report arrived (DLSR of a receiver report).
    UInt Age(const Time& aNow) const;

private:
    std::uint64_t mNTPTime = 0;
    UInt mRTPCycles = 0;
    UInt mRTPTime = 0;
    /// In units of 1 / 65536 s, low 32 bits.
    UInt mArrival = 0;
};

}  // namespace Player::RTP
