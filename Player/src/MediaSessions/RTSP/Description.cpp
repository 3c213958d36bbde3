#include "MediaSessions/RTSP/Description.hpp"

#include "SDP/Parser.hpp"

namespace Player::MediaSessions {

namespace {

/// Shorter bodies can't even name the version.
constexpr UInt kShortestSDP = 3;

}  // namespace

Description Description::Parse(const Buffer& aSDP) {
    Description lDescription;
    if (aSDP.Size() < kShortestSDP) { return lDescription; }
    ParseSDP(aSDP, lDescription.mSessionProperties, lDescription.mTrackProperties);
    if (!lDescription.IsComplete()) { return lDescription; }
    lDescription.mAvailableStart = Time::WithDecimalCString(lDescription.First("StartTime").c_str(), false);
    lDescription.mAvailableEnd = Time::WithDecimalCString(lDescription.First("EndTime").c_str(), false);
    return lDescription;
}

void Description::SetBase(const BaseURL& aBase, const Dialect& aDialect) {
    mBase = aBase;
    mSessionProperties->Insert("URL", aBase.mURL);
    for (const Track& lTrack : mTrackProperties) {
        lTrack->Insert("URL", aDialect.TrackURL(aBase, lTrack->Get("Id")));
    }
}

const Properties* Description::FirstOfType(const std::string& aMediaType) const {
    for (const Track& lTrack : mTrackProperties) {
        if (lTrack->Get("MediaType") == aMediaType) { return lTrack.Ptr(); }
    }
    return nullptr;
}

std::string Description::First(const char* aKey) const {
    std::string lText = mSessionProperties->Get(aKey);
    for (auto lTrack = mTrackProperties.begin(); lText.empty() && lTrack != mTrackProperties.end(); ++lTrack) {
        lText = (*lTrack)->Get(aKey);
    }
    return lText;
}

}  // namespace Player::MediaSessions
