#pragma once

#include "Player/Reception.hpp"

namespace Virertsp {

/// Why a track's media ended, for people: "ended by the server".
const char* EndingPhrase(Player::Reception::End aEnd);
/// Why a track's media ended, for programs: "bye".
const char* EndingName(Player::Reception::End aEnd);

}  // namespace Virertsp
