#include "Player/MediaSession.hpp"

namespace Player {

void MediaSession::TakeIn() {}

bool MediaSession::MediaWaits() const {
    return false;
}

Time MediaSession::RoundTrip() const {
    return Time(0);
}

SInt MediaSession::MediaDescriptor(UInt /*aTrack*/) const {
    return -1;
}

Reception MediaSession::TrackReception(UInt /*aTrack*/) const {
    return Reception();
}

}  // namespace Player
