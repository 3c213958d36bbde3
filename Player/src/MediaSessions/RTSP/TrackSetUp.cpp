#include <map>
#include <vector>

#include "MediaSessions/RTSP.hpp"
#include "Player/String.hpp"
#include "SDP/Parser.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

namespace {

using Map = std::map<std::string, std::string>;

/// Shorter bodies can't even name the version.
constexpr UInt kShortestSDP = 3;

/// The first two ports of a pair such as "6970-6971"; a server may append more.
std::string FirstTwoPorts(const std::string& aPorts) {
    const std::size_t lFirst = aPorts.find('-');
    return std::string::npos == lFirst ? aPorts : aPorts.substr(0, aPorts.find('-', lFirst + 1));
}

Time TimeOr(const std::string& aText, const Time& aDefault) {
    return aText.empty() ? aDefault : Time::WithDecimalCString(aText.c_str(), false);
}

}  // namespace

void RTSP::HandleSDP(const Buffer& aBody, const std::string& aBase) {
    if (!aBody.Empty()) {
        ForgetDescription();
        if (aBody.Size() >= kShortestSDP) { ParseSDP(aBody, mSessionProperties, mTrackProperties); }
    }
    if (!mSessionProperties || mTrackProperties.empty()) {
        PLAYER_THROW(SDPErr, 2, "RTSP::HandleSDP(): %s", "Invalid or incomplete SDP");
    }
    mAvailableStart = Time::WithDecimalCString(FirstInDescription("StartTime").c_str(), false);
    mAvailableEnd = Time::WithDecimalCString(FirstInDescription("EndTime").c_str(), false);
    mSessionProperties->Insert("URL", aBase);
    // Base and identifier are joined as they stand: a Content-Base ends in "/".
    for (const auto& lTrack : mTrackProperties) {
        lTrack->Insert("URL", aBase + lTrack->Get("Id"));
    }
}

void RTSP::ForgetDescription() {
    mSessionProperties.Set(nullptr);
    mTrackProperties.clear();
}

std::string RTSP::FirstInDescription(const char* aKey) const {
    std::string lText = mSessionProperties->Get(aKey);
    for (auto lTrack = mTrackProperties.begin(); lText.empty() && lTrack != mTrackProperties.end(); ++lTrack) {
        lText = (*lTrack)->Get(aKey);
    }
    return lText;
}

const Properties* RTSP::DescribedTrack(const std::string& aMediaType) const {
    for (const auto& lTrack : mTrackProperties) {
        if (lTrack->Get("MediaType") == aMediaType) { return lTrack.Ptr(); }
    }
    return nullptr;
}

void RTSP::HandleTrackVars(TrackIdx aIdx, const std::string& aParams) {
    Map lVars;
    SplitToMap(aParams, ';', '=', lVars);
    RTP::Stack& lStack = mTransport->ModifyTrackRTPStack(aIdx);
    const auto lWith = [&lVars](const char* aKey, auto aAction) {
        const auto lVar = lVars.find(aKey);
        if (lVar != lVars.end()) { aAction(lVar->second); }
    };
    lWith("ssrc", [&](const std::string& aVal) { lStack.SetExpectedSSRC(HexToUInt(aVal)); });
    lWith("seq", [&](const std::string& aVal) { lStack.SetSeqBase(static_cast<unsigned short>(DecimalToUInt(aVal))); });
    lWith("rtptime", [&](const std::string& aVal) { lStack.SetTimeBase(DecimalToUInt(aVal)); });
    lWith("source", [&](const std::string& aVal) { mTransport->SetTrackRemoteIP(aIdx, aVal); });
    lWith("server_port", [&](const std::string& aVal) { mTransport->SetTrackRemotePorts(aIdx, FirstTwoPorts(aVal)); });
    lWith("interleaved", [&](const std::string& aVal) { mTransport->SetInterLeavedChannelIdentifier(aIdx, aVal); });
}

void RTSP::HandleRange(const std::string& aValue) {
    Map lVars;
    SplitToMap(aValue, ';', '=', lVars);
    const auto lRange = lVars.find("npt");
    if (lRange == lVars.end()) { return; }

    std::vector<std::string> lTexts;
    Split(lRange->second, '-', lTexts);
    lTexts.resize(2);
    mPlayingStart = TimeOr(lTexts[0], mAvailableStart);
    mPlayingEnd = TimeOr(lTexts[1], mAvailableEnd);
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded; ++lIdx) {
        RTP::Stack& lStack = mTransport->ModifyTrackRTPStack(lIdx);
        lStack.SetBeginTime(mPlayingStart);
        lStack.SetEndTime(mPlayingEnd);
    }
}

void RTSP::HandleRTPInfo(const std::string& aValue) {
    std::vector<std::string> lEntries;
    Split(aValue, ',', lEntries);
    for (const std::string& lEntry : lEntries) {
        const std::string lURL = lEntry.substr(0, lEntry.find(';'));
        const std::size_t lSlash = lURL.rfind('/');
        if (std::string::npos == lSlash) { continue; }
        const std::string lSuffix = lURL.substr(lSlash + 1);
        // The first described track of a media type speaks for all tracks of that type.
        for (TrackIdx lIdx = 0; lIdx < mTracksAdded; ++lIdx) {
            const Properties* const lTrack = DescribedTrack(mStreams[lIdx].mProperties->Get("MediaType"));
            if (nullptr != lTrack && lTrack->Get("Id") == lSuffix) { HandleTrackVars(lIdx, lEntry); }
        }
    }
}

}  // namespace Player::MediaSessions
