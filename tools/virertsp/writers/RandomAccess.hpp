#pragma once

#include <string_view>

#include "Player/Properties.hpp"

namespace Virertsp {

enum class Coding { kH264, kVisual, kSound };

/// Of a track of one of the formats that can be written.
Coding CodingOf(const Player::Properties& aTrack);

/// Whether a decoder can begin with this sample: what `IsAvcRandomAccess` says of H.264, a picture of its own
/// of MPEG-4 visual, any unit of sound.
bool IsRandomAccess(Coding aCoding, std::string_view aSample);

}  // namespace Virertsp
