#include "VLC.hpp"

#include <stdexcept>

#include "Player/BitReader.hpp"

namespace Parser {

namespace {

constexpr UInt kMostBits = 32;

}  // namespace

bool more_rbsp_data(const Bitstream& aBitstream) {
    return aBitstream.mPos < aBitstream.mSize;
}

bool u_1(Bitstream& aBitstream) {
    return 0 != u_v(1, aBitstream);
}

UInt u_v(UInt aBits, Bitstream& aBitstream) {
    if (aBits > kMostBits) { throw std::runtime_error("u_v(): More than 32 bits"); }
    if (aBits > aBitstream.mSize - aBitstream.mPos) { throw std::runtime_error("u_v(): End of data"); }
    Player::BitReader lReader(aBitstream.mData, static_cast<UInt>((aBitstream.mSize + 7) / 8));
    lReader.Seek(aBitstream.mPos);
    aBitstream.mPos += aBits;
    return lReader.Read(aBits);
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
