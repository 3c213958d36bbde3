#include "Player/MediaSession.hpp"

namespace Player {

void MediaSession::TakeIn() {}

bool MediaSession::MediaWaits() const {
    return false;
}

SInt MediaSession::MediaDescriptor(UInt /*aTrack*/) const {
    return -1;
}

Reception MediaSession::TrackReception(UInt /*aTrack*/) const {
    return Reception();
}

}  // namespace Player
