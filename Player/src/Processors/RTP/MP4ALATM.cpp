#include "Processors/RTP/MP4ALATM.hpp"

#include <cstdint>

#include "Packets/MP4ASample.hpp"

namespace Player::Processors::RTP {

namespace {

/// Reads a PayloadLengthInfo (ISO/IEC 14496-3) and moves `aAt` past it: bytes that add up, of which the
/// first that is not 255 is the last.
std::uint64_t ReadLength(const Byte* aData, UInt aSize, UInt& aAt) {
    constexpr Byte kMore = 0xFF;
    std::uint64_t lLength = 0;
    while (aAt < aSize) {
        const Byte lByte = aData[aAt++];
        lLength += lByte;
        if (kMore != lByte) { break; }
    }
    return lLength;
}

}  // namespace

SharedPtr<Processor, SharedObject> MP4ALATM::Create(Properties& aFormat) {
    return CreateFor<MP4ALATM>(aFormat, "MP4A-LATM");
}

bool MP4ALATM::IsSampleStart(const Packets::RTP& /*aPacket*/) const {
    return true;
}

bool MP4ALATM::Decode(Time aPlayTime, const Byte* aData, UInt aSize, Time aLatest) const {
    bool lOk = true;
    for (UInt lAt = 0; lAt < aSize;) {
        const std::uint64_t lLength = ReadLength(aData, aSize, lAt);
        if (0 == lLength || lLength > aSize - lAt) { break; }
        const UInt lSize = static_cast<UInt>(lLength);
        const SharedPtr<Packet, SharedObject> lSample(new Packets::MP4ASample(aPlayTime, aData + lAt, lSize));
        lOk = Next().Handle(lSample, aLatest);
        lAt += lSize;
    }
    return lOk;
}

}  // namespace Player::Processors::RTP
