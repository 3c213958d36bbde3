#include <algorithm>
#include <map>
#include <optional>
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

/// Of an RTP-Info header, which has one per track.
constexpr std::size_t kMostInfoEntries = 16384;

/// The entries of an RTP-Info header, as many of them as are looked at.
std::vector<std::string> InfoEntries(const std::string& aValue) {
    std::size_t lEnd = 0;
    for (std::size_t i = 0; i < kMostInfoEntries && lEnd < aValue.size(); ++i) {
        lEnd = std::min(aValue.find(',', lEnd), aValue.size() - 1) + 1;
    }
    std::vector<std::string> lEntries;
    Split(aValue.substr(0, lEnd), ',', lEntries);
    return lEntries;
}

/// What the URL of an RTP-Info entry ends with, behind its last "/"; nothing without one.
std::optional<std::string> NameInEntry(const std::string& aEntry) {
    std::vector<std::string> lFields;
    Split(aEntry.substr(0, aEntry.find(';')), ';', lFields);
    lFields.resize(1);
    const std::size_t lSlash = lFields[0].rfind('/');
    if (std::string::npos == lSlash) { return std::nullopt; }
    return lFields[0].substr(lSlash + 1);
}

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
        // What can't be read to its end is not kept: half a presentation must not be set up later.
        SharedPtr<Properties, SharedObject> lSession;
        std::list<SharedPtr<Properties, SharedObject>> lTracks;
        if (aBody.Size() >= kShortestSDP) { ParseSDP(aBody, lSession, lTracks); }
        mSessionProperties = lSession;
        mTrackProperties.swap(lTracks);
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
    const std::multimap<std::string, TrackIdx> lTracks = TracksById();
    for (const std::string& lEntry : InfoEntries(aValue)) {
        const std::optional<std::string> lName = NameInEntry(lEntry);
        if (!lName) { continue; }
        const auto lNamed = lTracks.equal_range(*lName);
        for (auto lTrack = lNamed.first; lTrack != lNamed.second; ++lTrack) {
            HandleTrackVars(lTrack->second, lEntry);
        }
    }
}

std::multimap<std::string, TrackIdx> RTSP::TracksById() const {
    // The first described track of a media type speaks for all tracks of that type.
    Map lIds;
    for (const auto& lTrack : mTrackProperties) {
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
