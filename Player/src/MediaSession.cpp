#include "Player/MediaSession.hpp"

namespace Player {

Reception MediaSession::TrackReception(UInt /*aTrack*/) const {
    return Reception();
}

}  // namespace Player
