#include "MediaSessions/RTSP.hpp"

#include "Throw.hpp"

namespace Player::MediaSessions {

RTSP::RTSP() : mConnection(mConfiguration), mMessages(mConnection) {}

RTSP::~RTSP() = default;

void RTSP::Configure(const Properties& aConfig) {
    mConfiguration = Configuration(aConfig);
    for (TrackIdx lIdx = 0; lIdx < mTracksAdded; ++lIdx) {
        mTransport->ModifyTrackRTPStack(lIdx).SetTimeoutTime(mConfiguration.mTimeOutRTPAfter);
    }
}

Reception RTSP::TrackReception(UInt aTrack) const {
    return aTrack < mTracksAdded ? mTransport->GetTrackRTPStack(aTrack).GetReception() : Reception();
}

Time RTSP::RoundTrip() const {
    constexpr UInt kMicroseconds = 1000000;
    return Time(mConnection.RoundTrip(), kMicroseconds);
}

void RTSP::ThrowRefused(const char* aFunction, const char* aWhat, const Refusal& aRefusal) {
    PLAYER_THROW(RTSPErr, aRefusal.mStatus, "RTSP::%s(): %s: %03x %s", aFunction, aWhat, aRefusal.mStatus,
                 aRefusal.mText.c_str());
}

}  // namespace Player::MediaSessions
