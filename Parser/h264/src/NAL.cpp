#include "NAL.hpp"

#include <algorithm>

namespace Parser {

namespace {

constexpr Byte kEmulationPrevention = 3;

}  // namespace

std::ptrdiff_t EBSPtoRBSP(Byte* aBytes, std::size_t aLength, std::size_t aBegin) {
    std::size_t lEnd = std::min(aBegin, aLength);
    UInt lZeros = 0;
    for (std::size_t lPos = aBegin; lPos < aLength; ++lPos) {
        const Byte lByte = aBytes[lPos];
        if (2 == lZeros) {
            lZeros = 0;
            if (lByte < kEmulationPrevention) { return -1; }
            if (lByte == kEmulationPrevention) {
                if (lPos + 1 < aLength && aBytes[lPos + 1] > kEmulationPrevention) { return -1; }
                continue;
            }
        }
        lZeros = 0 == lByte ? lZeros + 1 : 0;
        aBytes[lEnd++] = lByte;
    }
    return static_cast<std::ptrdiff_t>(lEnd);
}

std::uint64_t RBSPtoSODB(const Byte* aBytes, std::size_t aLength) {
    while (aLength > 0 && 0 == aBytes[aLength - 1]) {
        --aLength;
    }
    if (0 == aLength) { return 0; }
    UInt lZeros = 0;
    while (0 == (aBytes[aLength - 1] >> lZeros & 1)) {
        ++lZeros;
    }
    return std::uint64_t{aLength} * 8 - lZeros - 1;
}

}  // namespace Parser
