#pragma once

#include <cstdint>

#include "Player/Mem.hpp"
#include "Player/Types.hpp"

namespace Player {

/// Big-endian bit cursor over bytes it does not own; they outlive it.
/// A read past the end yields zero bits for what is missing and leaves the cursor at the end: nothing
/// outside the bytes given is ever touched. Positions are in bits from the first byte's top bit.
class BitReader {
public:
    BitReader(const Byte* aData, UInt aSize) : mData(aData), mEnd(std::uint64_t{aSize} * 8) {}

    std::uint64_t Position() const { return mPosition; }
    bool AtEnd() const { return mPosition == mEnd; }
    /// A position behind the end stands for the end.
    void Seek(std::uint64_t aPosition) { mPosition = Util::Min(aPosition, mEnd); }
    void Skip(std::uint64_t aBits) { mPosition += Util::Min(aBits, mEnd - mPosition); }

    /// The next `aBits` bits, most significant first; of more than 32 the last 32.
    UInt Read(UInt aBits) {
        if (aBits > kMaxBits) { Skip(aBits - kMaxBits); }
        UInt lValue = 0;
        for (UInt lLeft = Util::Min(aBits, kMaxBits); 0 != lLeft;) {
            const UInt lTaken = Util::Min(lLeft, kBitsOfByte - BitOffset());
            lValue = lValue << lTaken | Peek(lTaken);
            lLeft -= lTaken;
            Skip(lTaken);
        }
        return lValue;
    }

private:
    static constexpr UInt kMaxBits = 32;
    static constexpr UInt kBitsOfByte = 8;

    UInt BitOffset() const { return static_cast<UInt>(mPosition % kBitsOfByte); }
    /// `aBits` bits that lie within one byte.
    UInt Peek(UInt aBits) const {
        if (AtEnd()) { return 0; }
        const UInt lByte = mData[mPosition / kBitsOfByte];
        return lByte >> (kBitsOfByte - BitOffset() - aBits) & ((1U << aBits) - 1);
    }

    const Byte* mData;
    std::uint64_t mEnd;
    std::uint64_t mPosition = 0;
};

}  // namespace Player
