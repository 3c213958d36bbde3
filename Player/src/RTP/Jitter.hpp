#pragma once

#include "Player/Types.hpp"

namespace Player::RTP {

/// The interarrival jitter of RFC 3550, section A.8. A transit is the arrival in timestamp units less the
/// packet's timestamp; only differences of transits count, so all of it wraps at 32 bits.
class Jitter {
public:
    void Start(UInt aTransit) { mLastTransit = aTransit; }

    void Update(UInt aTransit) {
        const UInt lStep = aTransit - mLastTransit;
        const UInt lDistance = 0 == lStep >> 31 ? lStep : 0 - lStep;
        mSixteenths += lDistance - ((mSixteenths + 8) >> 4);
        mLastTransit = aTransit;
    }

    /// In timestamp units.
    UInt Get() const { return mSixteenths >> 4; }

private:
    UInt mLastTransit = 0;
    /// Timestamp units times 16.
    UInt mSixteenths = 0;
};

}  // namespace Player::RTP
