#include "Processors/RTP/MP4VES.hpp"

#include <cstring>

#include "Packets/MP4VSample.hpp"

namespace Player::Processors::RTP {

namespace {

constexpr Byte kStartCode[] = {0x00, 0x00, 0x01};

}  // namespace

SharedPtr<Processor, SharedObject> MP4VES::Create(Properties& aFormat) {
    return CreateFor<MP4VES>(aFormat, "MP4V-ES");
}

bool MP4VES::IsSampleStart(const Packets::RTP& aPacket) const {
    return aPacket.Size() >= sizeof(kStartCode) && 0 == std::memcmp(aPacket.Begin(), kStartCode, sizeof(kStartCode));
}

bool MP4VES::Decode(Time aPlayTime, const Byte* aData, UInt aSize, Time aLatest) const {
    return Next().Handle(SharedPtr<Packet, SharedObject>(new Packets::MP4VSample(aPlayTime, aData, aSize)), aLatest);
}

}  // namespace Player::Processors::RTP
