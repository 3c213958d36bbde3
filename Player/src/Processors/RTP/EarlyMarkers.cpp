#include "Processors/RTP/EarlyMarkers.hpp"

namespace Player::Processors::RTP {

SharedPtr<Processor, SharedObject> EarlyMarkers::Create(Properties& aFormat) {
    return CreateFor<EarlyMarkers>(aFormat, "MP4V-ES");
}

void EarlyMarkers::Param(const String& aKey, const String& aVal) {
    if ("EndOfStream" == aKey) { Deliver(mPlayTime); }
    MP4VES::Param(aKey, aVal);
}

void EarlyMarkers::Flush() {
    mFrame.Clear();
    MP4VES::Flush();
}

bool EarlyMarkers::Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) {
    const Packets::RTP& lPacket = AsRTP(*aPacket);
    if (Continues(lPacket)) {
        Append(lPacket);
        return !mIsMarked || Deliver(aLatest);
    }
    // Nothing is missing in front of a packet that is the next.
    mIsMarked = mIsMarked || lPacket.SeqNumber() == mNextSeqNumber;
    const bool lOk = Deliver(aLatest);
    if (IsSampleStart(lPacket)) { Start(lPacket); }
    return lOk;
}

bool EarlyMarkers::Continues(const Packets::RTP& aPacket) const {
    const bool lFollows = !mFrame.Empty() && aPacket.SeqNumber() == mNextSeqNumber && aPacket.Timestamp() == mTimestamp;
    return lFollows && !(mIsMarked && IsSampleStart(aPacket));
}

void EarlyMarkers::Start(const Packets::RTP& aPacket) {
    mFrame.Assign(aPacket.Begin(), aPacket.Size());
    mPlayTime = aPacket.PlayTime();
    mTimestamp = aPacket.Timestamp();
    mNextSeqNumber = static_cast<unsigned short>(aPacket.SeqNumber() + 1);
    mIsMarked = aPacket.HasMarker();
}

void EarlyMarkers::Append(const Packets::RTP& aPacket) {
    ++mNextSeqNumber;
    mIsMarked = aPacket.HasMarker();
    if (aPacket.Size() > kMaxPendingBytes - mFrame.Size()) {
        // An empty frame makes the rest of it be dropped, too.
        mFrame.Clear();
        return;
    }
    mFrame.Append(aPacket.Begin(), aPacket.Size());
}

bool EarlyMarkers::Deliver(Time aLatest) {
    const bool lOk = mFrame.Empty() || !mIsMarked || Decode(mPlayTime, mFrame.Begin(), mFrame.Size(), aLatest);
    mFrame.Clear();
    return lOk;
}

}  // namespace Player::Processors::RTP
