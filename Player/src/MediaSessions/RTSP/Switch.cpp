#include "MediaSessions/RTSP.hpp"
#include "Player/String.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

namespace {

/// The new presentation does not fit the tracks that are set up: begin anew.
constexpr const char* kRetry = "RETRY";

}  // namespace

void RTSP::FinishSwitch(MediaHandler& aHandler, Time aFrom) {
    try {
        if (!RecvPlay(mCSeq, true)) { ThrowRefused("DoPlay", "Switching PLAY failed"); }
        SwitchTracks(aHandler);
        StartPlaying(aHandler);
        return;
    } catch (const Exception& lException) {
        Report(__FILE__, __LINE__, Severity::Info, "Setting up anew, switching was not possible: %s",
               lException.Message());
    } catch (...) {
        Report(__FILE__, __LINE__, Severity::Info, "Setting up anew, switching was not possible: %s", kRetry);
    }
    DoTeardown(aHandler, true);
    DoSessionReset();
    mDescription.mSessionProperties.Set(nullptr);
    DoDescribe(aHandler);
    DoPlay(aHandler, aFrom, false);
}

void RTSP::SwitchTracks(MediaHandler& aHandler) {
    if (mDescription.mTrackProperties.size() != mStreams.size()) { throw kRetry; }
    mTransport->Preflight();
    OfferTracks(aHandler);
    for (TrackIdx lIdx = 0; lIdx < mStreams.size(); ++lIdx) {
        SwitchTrack(aHandler, lIdx);
    }
}

void RTSP::SwitchTrack(MediaHandler& aHandler, TrackIdx aIdx) {
    const Properties* const lOffered = mDescription.FirstOfType(mStreams[aIdx].mProperties->Get("MediaType"));
    if (nullptr == lOffered) { throw kRetry; }
    Stream lStream;
    if (!BuildChain(aHandler, *lOffered, lStream)) { throw kRetry; }
    mStreams[aIdx].mProcessor = lStream.mProcessor;
    mTransport->AttachTrack(aIdx, lStream.mProcessor);
    RTP::Stack& lStack = mTransport->ModifyTrackRTPStack(aIdx);
    lStack.SetExpectedPT(static_cast<unsigned char>(DecimalToUInt(lOffered->Get("PayloadType"))));
    lStack.SetTimeRes(DecimalToUInt(lOffered->Get("TimeRes")));
    // It is kept in units of the clock rate.
    lStack.SetBeginTime(mDescription.mPlayingStart);
}

}  // namespace Player::MediaSessions
