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
    BitReader(const Byte* aData, UInt aSize) : mData(aData), mEnd(std::uint64_t{aSize} * kBitsOfByte) {}

    std::uint64_t Position() const { return mPosition; }
    bool AtEnd() const { return mPosition == mEnd; }
    /// A position past the end means the end.
    void Seek(std::uint64_t aPosition) { mPosition = Util::Min(aPosition, mEnd); }
    void Skip(std::uint64_t aBits) { mPosition += Util::Min(aBits, mEnd - mPosition); }

    /// The next `aBits` bits, most significant first; of more than 32 the last 32.
    UInt Read(UInt aBits) {
        const UInt lTaken = Util::Min(aBits, kMaxBits);
        Skip(aBits - lTaken);
        const std::uint64_t lWindow = Window() >> (kWindowBits - BitOffset() - lTaken);
        Skip(lTaken);
        return static_cast<UInt>(lWindow & ((std::uint64_t{1} << lTaken) - 1));
    }

private:
    static constexpr UInt kBitsOfByte = 8;
    static constexpr UInt kMaxBits = 32;
    /// As many bytes as 32 bits can touch.
    static constexpr UInt kWindowBits = 40;

    UInt BitOffset() const { return static_cast<UInt>(mPosition % kBitsOfByte); }
    std::uint64_t Window() const {
        std::uint64_t lWindow = 0;
        const std::uint64_t lFirst = mPosition - BitOffset();
        for (UInt lBit = 0; lBit < kWindowBits; lBit += kBitsOfByte) {
            lWindow = lWindow << kBitsOfByte | ByteAt(lFirst + lBit);
        }
        return lWindow;
    }
    Byte ByteAt(std::uint64_t aPosition) const { return aPosition < mEnd ? mData[aPosition / kBitsOfByte] : Byte{0}; }

    const Byte* mData;
    std::uint64_t mEnd;
    std::uint64_t mPosition = 0;
};

}  // namespace Player
