#include "Processors/RTP/RFC3016.hpp"

namespace Player::Processors::RTP {

bool RFC3016::Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) {
    return Decode(AsRTP(*aPacket), aLatest);
}

void RFC3016::Flush() {
    mExpectedSeqNumber = 0;
    mBuffer.Clear();
    Depacketizer::Flush();
}

bool RFC3016::Decode(const Packets::RTP& aPacket, Time aLatest) {
    if (IsSampleStart(aPacket)) {
        if (aPacket.HasMarker()) { return Decode(aPacket.PlayTime(), aPacket.Begin(), aPacket.Size(), aLatest); }
        mExpectedSeqNumber = aPacket.SeqNumber() + 1;
        mBuffer.Assign(aPacket.Begin(), aPacket.Size());
        return true;
    }
    if (mBuffer.Empty() || aPacket.SeqNumber() != mExpectedSeqNumber) { return true; }
    if (aPacket.Size() > kMaxPendingBytes - mBuffer.Size()) {
        // An empty buffer makes the rest of the frame be dropped, too.
        mBuffer.Clear();
        return true;
    }

    mExpectedSeqNumber += 1;
    mBuffer.Append(aPacket.Begin(), aPacket.Size());
    if (!aPacket.HasMarker()) { return true; }
    const bool lOk = Decode(aPacket.PlayTime(), mBuffer.Begin(), mBuffer.Size(), aLatest);
    mBuffer.Clear();
    return lOk;
}

}  // namespace Player::Processors::RTP
