#include "Processors/RTP/AMR.hpp"

#include "Player/AMRFrame.hpp"
#include "Player/Mem.hpp"

namespace Player::Processors::RTP {

namespace {

// Payload (RFC 3267 section 4.4):
//   codec mode request, 1 byte
//   table of contents, per frame 1 byte: F more entries follow (1 bit), type (4), quality (1), padding (2)
//   the frames in that order
constexpr UInt kTableStart = 1;
constexpr Byte kMoreFollow = 0x80;

/// Where the table of contents ends: after the entry without the F bit, at the payload's end at the latest.
UInt FindTableEnd(const Packets::RTP& aPacket) {
    UInt lAt = kTableStart;
    while (lAt < aPacket.Size() && 0 != (aPacket.Begin()[lAt] & kMoreFollow)) {
        ++lAt;
    }
    return Util::Min(lAt + 1, aPacket.Size());
}

/// `aSize` bytes of the payload from `aAt` on; those that the packet lacks are zero.
Packet* NewFrame(const Packets::RTP& aPacket, UInt aAt, UInt aSize) {
    const UInt lLeft = aPacket.Size() - aAt;
    const Byte* const lData = aPacket.Begin() + aAt;
    if (aSize <= lLeft) { return new Packets::Media(aPacket.PlayTime(), lData, aSize); }

    Byte lPadded[AMRFrame::kLargest] = {};
    Mem::Copy(lPadded, lData, lLeft);
    return new Packets::Media(aPacket.PlayTime(), lPadded, aSize);
}

}  // namespace

SharedPtr<Processor, SharedObject> AMR::Create(Properties& aFormat) {
    return CreateFor<AMR>(aFormat, "AMR");
}

bool AMR::Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) {
    const Packets::RTP& lPacket = AsRTP(*aPacket);
    const UInt lTableEnd = FindTableEnd(lPacket);
    UInt lAt = lTableEnd;
    bool lOk = true;
    for (UInt lEntry = kTableStart; lEntry < lTableEnd; ++lEntry) {
        const UInt lSize = AMRFrame::SizeOf(lPacket.Begin()[lEntry]);
        if (0 == lSize) { continue; }
        lOk = Next().Handle(SharedPtr<Packet, SharedObject>(NewFrame(lPacket, lAt, lSize)), aLatest);
        lAt += Util::Min(lSize, lPacket.Size() - lAt);
    }
    return lOk;
}

}  // namespace Player::Processors::RTP
