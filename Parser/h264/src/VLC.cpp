#include "VLC.hpp"

#include <stdexcept>

namespace Parser {

namespace {

constexpr UInt kMostBits = 32;

}  // namespace

bool more_rbsp_data(const Bitstream& aBitstream) {
    return aBitstream.mPos < aBitstream.mSize;
}

bool u_1(Bitstream& aBitstream) {
    if (!more_rbsp_data(aBitstream)) { throw std::runtime_error("u_1(): End of data"); }
    const std::uint64_t lPos = aBitstream.mPos++;
    return 0 != (aBitstream.mData[lPos / 8] >> (7 - lPos % 8) & 1);
}

UInt u_v(UInt aBits, Bitstream& aBitstream) {
    if (aBits > kMostBits) { throw std::runtime_error("u_v(): More than 32 bits"); }
    UInt lValue = 0;
    for (UInt lBit = 0; lBit < aBits; ++lBit) {
        lValue = lValue << 1 | (u_1(aBitstream) ? 1 : 0);
    }
    return lValue;
}

UInt ue_v(Bitstream& aBitstream) {
    UInt lZeros = 0;
    while (!u_1(aBitstream)) {
        if (++lZeros == kMostBits) { throw std::runtime_error("ue_v(): Code beyond 32 bits"); }
    }
    return (UInt{1} << lZeros) - 1 + u_v(lZeros, aBitstream);
}

SInt se_v(Bitstream& aBitstream) {
    const UInt lCode = ue_v(aBitstream);
    const SInt lHalf = static_cast<SInt>(lCode / 2);
    return 0 != lCode % 2 ? lHalf + 1 : -lHalf;
}

}  // namespace Parser
