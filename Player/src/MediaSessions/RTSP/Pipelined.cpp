#include "MediaSessions/RTSP.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

void RTSP::DoPipelinedPlay(MediaHandler& aHandler, Time aFrom) {
    Verdict lVerdict;
    try {
        SetUpTracks();
        SendPlay(aFrom, false);
        lVerdict = RecvPipelinedSetups();
        if (lVerdict.IsFinal()) { mTransport->Preflight(); }
    } catch (...) {
        // Answers that are still to come would be taken for those to later requests.
        DoConnectionReset();
        throw;
    }
    if (!lVerdict.IsFinal()) { return GoOnPipelined(aHandler, aFrom, lVerdict); }
    if (!RecvPlay(mCSeq, false)) {
        return GoOn(aHandler, aFrom, {OutcomeOfPlay(), mMessages.LastRefusal()}, "Pipelined PLAY failed");
    }
    if (Outcome::Accepted != lVerdict.mOutcome) { GiveUpPipelined(); }
    StartPlaying(aHandler);
}

RTSP::Verdict RTSP::RecvPipelinedSetups() {
    const UInt lTracks = static_cast<UInt>(mStreams.size());
    const bool lMayGoOn = MayGoOn() || mServerAuthentication.HasCredentials();
    Verdict lVerdict;
    for (TrackIdx lIdx = 0; lIdx < lTracks; ++lIdx) {
        try {
            if (RecvSetup(mCSeq - lTracks + lIdx, lIdx, lMayGoOn ? Severity::Info : Severity::Error)) { continue; }
        } catch (const NetworkErr&) {
            if (lVerdict.IsFinal()) { throw; }
            DoConnectionReset();
        }
        // Where it is known how to go on, it does not matter that the rest is lost.
        if (!lVerdict.IsFinal() && !mConnection.IsUsable()) { break; }
        const Verdict lNext = {OutcomeOfPipelinedSetUp(), mMessages.LastRefusal()};
        if (Outcome::Refused == lNext.mOutcome) { ReportPipelinedRefusal(lMayGoOn); }
        // Of several questions the server may know no more than the last.
        if (lNext.mOutcome >= lVerdict.mOutcome) { lVerdict = lNext; }
    }
    return lVerdict;
}

RTSP::Outcome RTSP::OutcomeOfPipelinedSetUp() {
    const Authenticator* const lAsked = Asked(mMessages.LastRefusal());
    return nullptr != lAsked && lAsked->HasCredentials() ? Outcome::Asked : OutcomeOfSetUp();
}

void RTSP::ReportPipelinedRefusal(bool aIsNews) const {
    if (aIsNews) { mMessages.ReportRefusal(Severity::Error); }
    Report(__FILE__, __LINE__, Severity::Error, "RTSP::DoPlay(): %s: %03x %s", "Pipelined SETUP failed",
           mMessages.StatusCode(), mMessages.StatusText().c_str());
}

void RTSP::GoOnPipelined(MediaHandler& aHandler, Time aFrom, Verdict aVerdict) {
    constexpr char kWords[] = "Pipelined SETUP failed";
    DropPipelinedPlay(aVerdict);
    const bool lIsAsked = Outcome::Asked == aVerdict.mOutcome;
    if (lIsAsked && CanAnswer(aVerdict.mRefusal, mAnswers++)) { return StartAnew(aHandler, aFrom); }
    if (lIsAsked || Outcome::MulticastOnly == aVerdict.mOutcome) { EndPipelined(); }
    GoOn(aHandler, aFrom, aVerdict, kWords);
}

void RTSP::DropPipelinedPlay(Verdict& aVerdict) {
    // Whether it plays a part of the presentation does not matter any more.
    try {
        Headers lHeaders;
        Buffer lBody;
        const bool lIsRefused =
            mConnection.IsUsable() && !mMessages.RecvResponse(lHeaders, lBody, mCSeq, Severity::Info);
        if (lIsRefused && Outcome::Asked == aVerdict.mOutcome && nullptr != Asked(mMessages.LastRefusal())) {
            aVerdict.mRefusal = mMessages.LastRefusal();
        }
    } catch (const Exception&) { DoConnectionReset(); }
    if (ClosesConnection(aVerdict.mRefusal.mHeaders)) { DoConnectionReset(); }
}

void RTSP::EndPipelined() {
    if (mSessionId.empty()) { return; }
    try {
        SendTeardown();
        RecvTeardown(mCSeq, false);
    } catch (...) {
        // The caller learns why nothing is played. What is still set up is torn down before the next presentation.
    }
}

void RTSP::GiveUpPipelined() {
    constexpr char kWords[] = "One or more pipelined SETUP requests failed";
    Report(__FILE__, __LINE__, Severity::Error, "RTSP::DoPlay(): %s", kWords);
    EndPipelined();
    throw RTSPErr(ErrorCode::kPipelinedSetUpFailed, "RTSP::DoPlay(): %s", kWords);
}

}  // namespace Player::MediaSessions
