#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Fuzz {

using Bytes = std::vector<std::uint8_t>;

/// What the fuzzer gives, taken from the front: numbers are big-endian, and after the end all is zero or empty.
/// Nothing is taken from the back and no number depends on another, so a script can write inputs, too.
class Input {
public:
    Input(const std::uint8_t* aData, std::size_t aSize) : mData(aData), mLeft(aSize) {}

    bool Empty() const { return 0 == mLeft; }
    std::size_t Left() const { return mLeft; }

    std::uint8_t Byte() {
        if (0 == mLeft) { return 0; }
        --mLeft;
        return *mData++;
    }
    bool Flag() { return 0 != (Byte() & 1); }
    std::uint32_t Word16() { return Number(2); }
    std::uint32_t Word32() { return Number(4); }
    /// One byte, below `aLimit`.
    unsigned Below(unsigned aLimit) { return Byte() % aLimit; }

    /// As many bytes as are left of `aSize`, in a block of their exact size.
    Bytes Take(std::size_t aSize) {
        const std::size_t lSize = std::min(aSize, mLeft);
        Bytes lBytes(mData, mData + lSize);
        mData += lSize;
        mLeft -= lSize;
        return lBytes;
    }
    /// Behind its size in 16 bits.
    Bytes Chunk() { return Take(Word16()); }
    Bytes Rest() { return Take(mLeft); }

private:
    std::uint32_t Number(unsigned aBytes) {
        std::uint32_t lNumber = 0;
        while (0 != aBytes--) {
            lNumber = lNumber << 8 | Byte();
        }
        return lNumber;
    }

    const std::uint8_t* mData;
    std::size_t mLeft;
};

inline std::string AsText(const Bytes& aBytes) {
    return std::string(aBytes.begin(), aBytes.end());
}

/// Cuts bytes into pieces of the sizes given, over and over; a size of 0 takes all that is left, and so does having no
/// sizes. No piece is empty.
inline std::vector<Bytes> Cut(const Bytes& aBytes, const Bytes& aSizes) {
    std::vector<Bytes> lPieces;
    std::size_t lAt = 0;
    for (std::size_t lIdx = 0; lAt < aBytes.size(); ++lIdx) {
        const std::size_t lLeft = aBytes.size() - lAt;
        const std::size_t lWanted = aSizes.empty() ? 0 : aSizes[lIdx % aSizes.size()];
        const std::size_t lSize = 0 == lWanted ? lLeft : std::min(lWanted, lLeft);
        const auto lBegin = aBytes.begin() + static_cast<std::ptrdiff_t>(lAt);
        lPieces.emplace_back(lBegin, lBegin + static_cast<std::ptrdiff_t>(lSize));
        lAt += lSize;
    }
    return lPieces;
}

}  // namespace Fuzz
