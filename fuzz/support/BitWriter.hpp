#pragma once

#include "support/Input.hpp"

namespace Fuzz {

/// Writes numbers bit by bit, the highest first; the last byte is filled up with zeros.
class BitWriter {
public:
    /// The lowest `aBits` of the value.
    BitWriter& Put(unsigned aBits, unsigned aValue) {
        while (0 != aBits--) {
            if (0 == mBits++ % 8) { mBytes.push_back(0); }
            mBytes.back() = static_cast<std::uint8_t>(mBytes.back() | (aValue >> aBits & 1) << (7 - (mBits - 1) % 8));
        }
        return *this;
    }
    /// ue(v) of H.264: as many zeros in front as the number plus one has bits behind its first.
    BitWriter& PutGolomb(unsigned aValue) {
        unsigned lZeros = 0;
        while ((aValue + 1) >> lZeros > 1) {
            ++lZeros;
        }
        return Put(lZeros, 0).Put(lZeros + 1, aValue + 1);
    }
    const Bytes& Get() const { return mBytes; }

private:
    Bytes mBytes;
    unsigned mBits = 0;
};

}  // namespace Fuzz
