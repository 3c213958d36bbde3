#include "Player/MediaSession.hpp"

namespace Player {

void MediaSession::TakeIn() {}

SInt MediaSession::MediaDescriptor(UInt /*aTrack*/) const {
    return -1;
}

Reception MediaSession::TrackReception(UInt /*aTrack*/) const {
    return Reception();
}

}  // namespace Player
