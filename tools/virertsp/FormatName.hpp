#pragma once

#include <string>

#include "Player/Properties.hpp"

namespace Virertsp {

/// What a track's description calls its format. Payload types below 96 need no description (RFC 3551 section 6): they
/// have their own names.
std::string FormatName(const Player::Properties& aTrack);

}  // namespace Virertsp
