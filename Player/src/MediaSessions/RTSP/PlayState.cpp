#include "MediaSessions/RTSP.hpp"
#include "Player/Report.hpp"

namespace Player::MediaSessions {

void RTSP::EnterState(PlayState aState, const char* aName) {
    if (aState == mState) { return; }
    Report(__FILE__, __LINE__, Severity::Info, "RTSP: State -> %s", aName);
    mState = aState;
    mStateTime = Time::Now();
    mStateSince = Connection::Clock::now();
    if (Buffering == aState || Playing == aState) { mHasMedia = true; }
    if (0 != mTracksAdded) { mTransport->Notify("State", aName); }
}

bool RTSP::GetsNoMore(TrackIdx aIdx) {
    RTP::Stack& lStack = mTransport->ModifyTrackRTPStack(aIdx);
    return lStack.Full() || 0 != lStack.Ended(Time::Now());
}

bool RTSP::HoldsTheRest(TrackIdx aIdx) {
    bool lHolds = false;
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded; ++lIdx) {
        lHolds = !mTransport->GetTrackRTPStack(lIdx).Empty() || lHolds;
    }
    return lHolds && GetsNoMore(aIdx);
}

bool RTSP::HasBuffered(TrackIdx aIdx) {
    return mTransport->GetTrackRTPStack(aIdx).SizeInTime() > Time(mConfiguration.mTargetRTPBuffer, 1) ||
           GetsNoMore(aIdx);
}

bool RTSP::Fill(UInt aTrack) {
    StayAlive();
    if (aTrack >= mTracksAdded) { return false; }
    const bool lHasTaken = mTransport->FillTrack(aTrack);
    if (Playing == mState) { return lHasTaken; }
    if (!IsActive()) { return false; }
    if (!lHasTaken && !HoldsTheRest(aTrack)) {
        FallOverWhenSilent();
        return false;
    }
    if (WaitData == mState) { EnterState(Buffering, "Buffering"); }
    if (!mServer.mServerIsStrand && !HasBuffered(aTrack)) { return false; }
    EnterState(Playing, "Playing");
    return true;
}

bool RTSP::Fetch(UInt aTrack) {
    const RTP::Transport* const mSrc = mTransport.Ptr();
    PLAYER_ASSERT(0 != mSrc);
    return Playing == mState && aTrack < mTracksAdded && mTransport->FetchTrack(aTrack);
}

void RTSP::TakeIn() {
    StayAlive();
    // The first media to arrive change the state, so it must be `Produce` that sees them.
    if (Buffering == mState || Playing == mState) { mTransport->Fill(); }
}

SInt RTSP::MediaDescriptor(UInt aTrack) const {
    if (!IsActive() || aTrack >= mTracksAdded) { return -1; }
    const RTP::Stack& lStack = mTransport->GetTrackRTPStack(aTrack);
    // What is not read stays readable, and what is here already has no need to come.
    if (!lStack.WantsMore() || (Playing == mState && !lStack.Empty())) { return -1; }
    return Interleaves() ? mConnection.Descriptor() : mTransport->TrackDescriptor(aTrack);
}

bool RTSP::Produce(UInt aTrack) {
    StayAlive();
    if (!IsActive() || aTrack >= mTracksAdded) { return false; }
    if (WaitData == mState) {
        if (!mTransport->Fill() && !HoldsTheRest(0)) {
            FallOverWhenSilent();
            return false;
        }
        EnterState(Buffering, "Buffering");
    }
    if (Buffering == mState) {
        if (!mServer.mServerIsStrand) {
            mTransport->Fill();
            // The first track decides for all.
            if (!HasBuffered(0)) { return false; }
        }
        EnterState(Playing, "Playing");
    }
    return mTransport->ProduceTrack(aTrack);
}

}  // namespace Player::MediaSessions
