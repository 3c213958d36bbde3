#pragma once

#include "Player/Processor.hpp"
#include "Player/Properties.hpp"

namespace Player::Processors::RTP {

/// Asks each depacketizer in turn whether a track's description is its own: H264, MP4VES, MP4ALATM, AMR,
/// MPEG4Generic. The first that says yes has set "Transport" to "Sample". Null when none does.
SharedPtr<Processor, SharedObject> CreateDepacketizer(Properties& aFormat);

/// As `CreateDepacketizer`, but H.264 and MP4V-ES tolerate servers that mark the ends of units differently.
SharedPtr<Processor, SharedObject> CreateTolerantDepacketizer(Properties& aFormat);

}  // namespace Player::Processors::RTP
