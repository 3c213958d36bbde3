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

void RTSP::ThrowRefused(const char* aFunction, const char* aWhat) const {
    PLAYER_THROW(RTSPErr, mMessages.StatusCode(), "RTSP::%s(): %s: %03x %s", aFunction, aWhat, mMessages.StatusCode(),
                 mMessages.StatusText().c_str());
}

}  // namespace Player::MediaSessions
