#pragma once

#include "Player/Processor.hpp"
#include "Player/Properties.hpp"

namespace Player::Processors::RTP {

/// Asks each depacketizer in turn whether a track's description is its own: H264, MP4VES, MP4ALATM, AMR,
/// MPEG4Generic. The first that says yes has set "Transport" to "Sample". Null when none does.
SharedPtr<Processor, SharedObject> CreateDepacketizer(Properties& aFormat);

/// The same with those that complete what servers mark differently, of H.264 and MP4V-ES.
SharedPtr<Processor, SharedObject> CreateTolerantDepacketizer(Properties& aFormat);

}  // namespace Player::Processors::RTP
