#include "MediaSessions/RTSP.hpp"
#include "Player/URL.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

void RTSP::Pause(MediaHandler& aHandler) {
    const Messages::Listening lListening(mMessages, aHandler);
    if (IsActive()) { DoPause(); }
}

void RTSP::DoPause() {
    SendPause();
    if (!RecvPause(mCSeq)) { ThrowRefused("DoPlay", "PAUSE failed"); }
    mTransport->Fill();
    const Time lNow = Time::Now();
    bool lEnded = false;
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded; ++lIdx) {
        lEnded = 0 != mTransport->ModifyTrackRTPStack(lIdx).Ended(lNow) || lEnded;
    }
    if (lEnded) { EnterState(Stopped, "Stopped"); }
}

bool RTSP::RecvPause(UInt aCSeq) {
    Headers lHeaders;
    const bool lSuccess = Receive(lHeaders, aCSeq);
    const bool lPaused = lSuccess || Speaks().HasStopped(mMessages.StatusCode());
    if (lPaused) { EnterState(Paused, "Paused"); }
    return lPaused;
}

void RTSP::Resume(MediaHandler& aHandler) {
    const Messages::Listening lListening(mMessages, aHandler);
    if (Paused == mState) {
        DoResume();
    } else if (Stopped == mState) {
        // The clip has played to its end on the server; what is left of it here can still be played.
        if (0 == mTracksAdded || !mTransport->FillOrHave()) {
            PLAYER_THROW(RTSPErr, ErrorCode::kClipEnded, "RTSP::Resume(): %s", "Clip has ended");
        }
        EnterState(Playing, "Playing");
    }
}

void RTSP::Preflight() {
    mTransport->Preflight();
    const Time lNow = Time::Now();
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded; ++lIdx) {
        mTransport->ModifyTrackRTPStack(lIdx).Preflight(lNow);
    }
}

void RTSP::DoResume() {
    Preflight();
    mTransport->Fill();
    SendPlayOn();
    // Where their times begin is what the answer says.
    Messages::HoldingFrames lEarly(mMessages, Speaks().KeepsEarlyMedia());
    Headers lHeaders;
    if (!Receive(lHeaders, mCSeq)) { ThrowRefused("DoPlay", "Resuming PLAY failed"); }
    if (Speaks().NeedsRTPInfo() && 0 == lHeaders.count("RTP-Info")) {
        PLAYER_THROW(RTSPErr, ErrorCode::kMalformed, "RTSP::DoResume(): %s: %s", "Invalid PLAY response",
                     "RTP-Info missing");
    }
    if (!Speaks().NeedsRTPInfo()) { LearnAnew(); }
    HandleRTPInfo(lHeaders["RTP-Info"]);
    lEarly.Release();
    EnterState(WaitData, "WaitData");
}

void RTSP::Seek(MediaHandler& aHandler, Time aTo) {
    const Messages::Listening lListening(mMessages, aHandler);
    // A start that failed between two tracks leaves one that would play, and one that the player waits for in vain.
    if (!IsSetUp()) { PLAYER_THROW(SystemErr, ErrorCode::kNoSession, "RTSP::Seek(): %s", "No valid media session"); }
    if (IsActive()) { DoPause(); }
    DoSeek(aHandler, aTo);
}

void RTSP::DoSeek(MediaHandler& aHandler, Time aTo) {
    Preflight();
    mTransport->Fill();
    mFrom = aTo;
    SendPlayFrom(aTo);
    if (!RecvPlay(mCSeq, false)) { ThrowRefused("DoPlay", "Seeking PLAY failed"); }
    StartPlaying(aHandler);
}

void RTSP::Stop(MediaHandler& aHandler) {
    const Messages::Listening lListening(mMessages, aHandler);
    if (!mSessionId.empty()) { DoTeardown(aHandler, false); }
    DoCommonReset();
}

void RTSP::Close(MediaHandler& aHandler) {
    const Messages::Listening lListening(mMessages, aHandler);
    try {
        if (!mSessionId.empty()) { DoTeardown(aHandler, false); }
    } catch (...) {
        DoFullReset();
        throw;
    }
    DoFullReset();
}

void RTSP::DoTeardown(MediaHandler& /*aHandler*/, bool aReconnect) {
    try {
        SendTeardown();
        RecvTeardown(mCSeq, aReconnect);
    } catch (...) {
        EnterState(Stopped, "Stopped");
        throw;
    }
    EnterState(Stopped, "Stopped");
}

bool RTSP::RecvTeardown(UInt aCSeq, bool aReconnect) {
    Headers lHeaders;
    if (!Receive(lHeaders, aCSeq)) { return false; }
    try {
        if (ClosesConnection(lHeaders)) {
            DoConnectionReset();
            if (aReconnect) { mConnection.DoReconnect(Player::URL::Authority(URL())); }
        }
    } catch (...) {
        // Whether or not the server can be reached again, the session is over.
        DoSessionReset();
        throw;
    }
    DoSessionReset();
    return true;
}

void RTSP::DoCommonReset() {
    ForgetDescription();
    mCSeq = 0;
    mPipelinedRequests = 0;
    mServer = ServerFeatures();
    mConnection.SetURL("");
    mAuthority.clear();
    mControlURL.clear();
}

void RTSP::DoSessionReset() {
    mSessionId.clear();
    mStreams.clear();
    ReleaseTransport();
}

void RTSP::ForgetServer() {
    mServer = ServerFeatures();
    mWays = {};
    mKeepAlive.Reset();
}

void RTSP::DoFullReset() {
    DoSessionReset();
    DoCommonReset();
    DoConnectionReset();
    ForgetServer();
}

}  // namespace Player::MediaSessions
