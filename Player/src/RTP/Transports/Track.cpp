#include "RTP/Transports/Track.hpp"

namespace Player::RTP::Transports {

namespace {

const char* ReasonOfEnd(UInt aState) {
    switch (static_cast<Reception::End>(aState)) {
        case Reception::End::kTimedOut: return "Timeout";
        case Reception::End::kEndTime: return "EndTime";
        case Reception::End::kBye: return "Bye";
        default: return "Unknown";
    }
}

}  // namespace

bool Track::WantsMore(Time aNow) {
    if (mStack.WantsMore()) { return true; }
    mStack.Preflight(aNow);
    return false;
}

void Track::Notify(const String& aKey, const String& aVal) {
    if (mProcessor) { mProcessor->Param(aKey, aVal); }
}

void Track::Flush(Time aNow) {
    if (mProcessor) { mProcessor->Flush(); }
    mStack.Flush(aNow);
    mEndNotified = false;
}

bool Track::Fetch() {
    if (!mProcessor || mStack.Empty()) { return false; }
    bool lWantsMore = true;
    while (lWantsMore && !mStack.Empty()) {
        const SharedPtr<Packets::RTP, SharedObject> lPacket = mStack.Pop();
        lWantsMore = mProcessor->Handle(lPacket, mStack.AdjustedLatestTime());
    }
    return true;
}

bool Track::NotifyEnd(Time aNow) {
    const UInt lState = mStack.Ended(aNow);
    if (0 == lState || !mStack.Empty() || mEndNotified) { return false; }
    mEndNotified = true;
    Notify("EndOfStream", ReasonOfEnd(lState));
    return true;
}

}  // namespace Player::RTP::Transports
