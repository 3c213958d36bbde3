#include "Player/MediaSession.hpp"

namespace Player {

void MediaSession::TakeIn() {}

Reception MediaSession::TrackReception(UInt /*aTrack*/) const {
    return Reception();
}

}  // namespace Player
