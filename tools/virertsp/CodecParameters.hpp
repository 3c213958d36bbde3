#pragma once

#include <string>
#include <vector>

#include "Parser/AudioConfig.hpp"
#include "Player/FormatParameters.hpp"
#include "Player/Properties.hpp"

namespace Virertsp {

Player::FormatParameters FormatParametersOf(const Player::Properties& aTrack);

/// The NAL units in "sprop-parameter-sets" (RFC 6184 section 8.1).
std::vector<std::string> ParameterSetsOf(const Player::Properties& aTrack);

/// Of the track's "config": for MP4A-LATM a StreamMuxConfig in whose front an AudioSpecificConfig lies.
/// Throws `Failure` with `kExitNothingPlayable` when there is none that can be read.
Parser::AudioConfig AudioConfigOf(const Player::Properties& aTrack);

}  // namespace Virertsp
