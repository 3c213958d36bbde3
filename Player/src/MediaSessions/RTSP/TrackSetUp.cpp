#include <map>

#include "MediaSessions/RTSP.hpp"
#include "MediaSessions/RTSP/Headers/RTPInfo.hpp"
#include "MediaSessions/RTSP/Headers/Range.hpp"
#include "MediaSessions/RTSP/Headers/TransportHeader.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

void RTSP::HandleSDP(const Buffer& aBody, const BaseURL& aBase) {
    // An answer without a description keeps the one at hand; what can't be read to its end leaves none.
    Description lDescription;
    std::swap(lDescription, mDescription);
    if (!aBody.Empty()) {
        Buffer lBody(aBody);
        Speaks().Prepare(lBody);
        lDescription = Description::Parse(lBody);
    }
    if (!lDescription.IsComplete()) {
        PLAYER_THROW(SDPErr, ErrorCode::kUnusable, "RTSP::HandleSDP(): %s", "Invalid or incomplete SDP");
    }
    lDescription.SetBase(aBase, Speaks());
    mControlURL = Speaks().ControlURL(aBase.mURL, lDescription.mSessionProperties->Get("Id"));
    std::swap(lDescription, mDescription);
}

void RTSP::ForgetDescription() {
    mDescription = Description();
}

void RTSP::SetTrackVars(TrackIdx aIdx, const TransportHeader& aVars) {
    RTP::Stack& lStack = mTransport->ModifyTrackRTPStack(aIdx);
    if (aVars.mSSRC) {
        Speaks().TrustsSSRC() ? lStack.SetExpectedSSRC(*aVars.mSSRC) : lStack.SuggestSSRC(*aVars.mSSRC);
    }
    // Zero is what servers say that do not know.
    const auto lIsKnown = [this](const auto& aVar) { return aVar && (Speaks().NeedsRTPInfo() || 0 != *aVar); };
    const bool lKnowsSeq = lIsKnown(aVars.mSeq);
    if (lKnowsSeq) { lStack.SetSeqBase(*aVars.mSeq, Speaks().StepOverPause()); }
    // Without the number of the first packet only its time separates the range from the one before.
    const UInt lLead = lKnowsSeq ? Speaks().SecondsBeforeStart() * lStack.GetTimeRes() : 0;
    if (lIsKnown(aVars.mRTPTime)) { lStack.SetTimeBase(*aVars.mRTPTime, lLead); }
    if (aVars.mSource) { mTransport->SetTrackRemoteIP(aIdx, *aVars.mSource); }
    if (aVars.mServerPorts) { mTransport->SetTrackRemotePorts(aIdx, *aVars.mServerPorts); }
    if (aVars.mChannels) { mTransport->SetInterLeavedChannelIdentifier(aIdx, *aVars.mChannels); }
}

void RTSP::HandleRange(const std::string& aValue) {
    const std::optional<Range> lRange = Range::Parse(aValue);
    if (!lRange) { return; }
    mDescription.mPlayingStart = lRange->mStart.value_or(mDescription.mAvailableStart);
    mDescription.mPlayingEnd = lRange->mEnd.value_or(mDescription.mAvailableEnd);
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded; ++lIdx) {
        RTP::Stack& lStack = mTransport->ModifyTrackRTPStack(lIdx);
        lStack.SetBeginTime(mDescription.mPlayingStart);
        lStack.SetEndTime(mDescription.mPlayingEnd);
    }
}

void RTSP::HandleRTPInfo(const std::string& aValue) {
    const std::multimap<std::string, TrackIdx> lTracks = TracksByKey();
    const BaseURL lBase = mDescription.IsComplete() ? mDescription.mBase : BaseURL{URL()};
    for (const RTPInfo::Entry& lEntry : RTPInfo::Parse(aValue)) {
        const std::optional<std::string> lKey = Speaks().KeyOf(lEntry, lBase);
        if (!lKey) { continue; }
        const auto lNamed = lTracks.equal_range(*lKey);
        for (auto lTrack = lNamed.first; lTrack != lNamed.second; ++lTrack) {
            SetTrackVars(lTrack->second, lEntry.mVars);
        }
    }
}

void RTSP::ForgetBases() {
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded; ++lIdx) {
        mTransport->ModifyTrackRTPStack(lIdx).SetSeqBase(0);
        mTransport->ModifyTrackRTPStack(lIdx).SetTimeBase(0);
    }
}

void RTSP::LearnAnew() {
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded; ++lIdx) {
        mTransport->ModifyTrackRTPStack(lIdx).LearnAnew(Speaks().StepOverPause());
    }
}

std::multimap<std::string, TrackIdx> RTSP::TracksByKey() const {
    std::map<std::string, std::string> lIds;
    for (const auto& lTrack : mDescription.mTrackProperties) {
        lIds.emplace(lTrack->Get("MediaType"), lTrack->Get("Id"));
    }
    std::multimap<std::string, TrackIdx> lTracks;
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded && lIdx < mStreams.size(); ++lIdx) {
        const Properties& lTrack = *mStreams[lIdx].mProperties;
        const auto lId = lIds.find(lTrack.Get("MediaType"));
        if (lId != lIds.end()) { lTracks.emplace(Speaks().KeyOf(lTrack.Get("URL"), lId->second), lIdx); }
    }
    return lTracks;
}

}  // namespace Player::MediaSessions
