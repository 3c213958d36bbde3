#pragma once

#include "Processors/RTP/Chain.hpp"

namespace Player::Testing {

/// The AU header section being written, field by field.
class AUHeaders {
public:
    /// The low `aWidth` bits of `aValue`.
    AUHeaders& Put(UInt aWidth, unsigned long long aValue) {
        while (0 != aWidth--) {
            if (0 == mBits % 8) { mBytes.push_back(0); }
            const unsigned long long lBit = aWidth < 64 ? aValue >> aWidth & 1 : 0;
            mBytes.back() = static_cast<Byte>(mBytes.back() | lBit << (7 - mBits % 8));
            ++mBits;
        }
        return *this;
    }

    /// Length field, section and data.
    Bytes Payload(const Bytes& aData) const { return PayloadWithLength(mBits, aData); }
    /// The same with another length than the section has.
    Bytes PayloadWithLength(UInt aLength, const Bytes& aData) const {
        return Bytes{static_cast<Byte>(aLength >> 8), static_cast<Byte>(aLength)} + mBytes + aData;
    }

private:
    Bytes mBytes;
    UInt mBits = 0;
};

}  // namespace Player::Testing
