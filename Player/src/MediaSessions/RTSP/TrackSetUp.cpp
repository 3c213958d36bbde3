#include <map>

#include "MediaSessions/RTSP.hpp"
#include "MediaSessions/RTSP/RTPInfo.hpp"
#include "MediaSessions/RTSP/Range.hpp"
#include "MediaSessions/RTSP/TransportHeader.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

void RTSP::HandleSDP(const Buffer& aBody, const std::string& aBase) {
    // An answer without a description keeps the one at hand; what can't be read to its end leaves none.
    Description lDescription;
    std::swap(lDescription, mDescription);
    if (!aBody.Empty()) { lDescription = Description::Parse(aBody); }
    if (!lDescription.IsComplete()) { PLAYER_THROW(SDPErr, 2, "RTSP::HandleSDP(): %s", "Invalid or incomplete SDP"); }
    lDescription.SetBase(aBase);
    std::swap(lDescription, mDescription);
}

void RTSP::ForgetDescription() {
    mDescription = Description();
}

void RTSP::HandleTrackVars(TrackIdx aIdx, const std::string& aParams) {
    SetTrackVars(aIdx, TransportHeader::Parse(aParams));
}

void RTSP::SetTrackVars(TrackIdx aIdx, const TransportHeader& aVars) {
    RTP::Stack& lStack = mTransport->ModifyTrackRTPStack(aIdx);
    if (aVars.mSSRC) { lStack.SetExpectedSSRC(*aVars.mSSRC); }
    if (aVars.mSeq) { lStack.SetSeqBase(*aVars.mSeq); }
    if (aVars.mRTPTime) { lStack.SetTimeBase(*aVars.mRTPTime); }
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
    const std::multimap<std::string, TrackIdx> lTracks = TracksById();
    for (const RTPInfo::Entry& lEntry : RTPInfo::Parse(aValue)) {
        if (!lEntry.mName) { continue; }
        const auto lNamed = lTracks.equal_range(*lEntry.mName);
        for (auto lTrack = lNamed.first; lTrack != lNamed.second; ++lTrack) {
            SetTrackVars(lTrack->second, lEntry.mVars);
        }
    }
}

std::multimap<std::string, TrackIdx> RTSP::TracksById() const {
    // The first described track of a media type speaks for all tracks of that type.
    std::map<std::string, std::string> lIds;
    for (const auto& lTrack : mDescription.mTrackProperties) {
        lIds.emplace(lTrack->Get("MediaType"), lTrack->Get("Id"));
    }
    std::multimap<std::string, TrackIdx> lTracks;
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded && lIdx < mStreams.size(); ++lIdx) {
        const auto lId = lIds.find(mStreams[lIdx].mProperties->Get("MediaType"));
        if (lId != lIds.end()) { lTracks.emplace(lId->second, lIdx); }
    }
    return lTracks;
}

}  // namespace Player::MediaSessions
