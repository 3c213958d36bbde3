#include "Player/MediaTrack.hpp"

#include "Player/Report.hpp"

namespace Player::Consumers {

void MediaTrack::Param(const String& aKey, const String& aVal) {
    Report(__FILE__, __LINE__, Severity::Debug, "Got param: '%s' -> '%s'", aKey.c_str(), aVal.c_str());
    if ("EndOfStream" != aKey) { return; }
    mEnded = true;
    mTimedOut = "Timeout" == aVal;
}

bool MediaTrack::Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) {
    mPackets.push_back(aPacket);
    mLatestTime = aLatest;
    return false;
}

void MediaTrack::Flush() {
    mPackets.clear();
    mLatestTime = Time(0);
    mPoppedTime = Time(0);
    mEnded = false;
}

SharedPtr<Packet, SharedObject> MediaTrack::Pop() {
    SharedPtr<Packet, SharedObject> lPacket;
    if (mPackets.empty()) { return lPacket; }
    lPacket.Swap(mPackets.front());
    mPackets.pop_front();
    mPoppedTime = lPacket->PlayTime();
    return lPacket;
}

}  // namespace Player::Consumers
