#pragma once

#include <string>

#include "Player/MediaHandler.hpp"

namespace Virertsp {

/// The keys that `--config` takes, for the help.
std::string ConfigurationHelp();

/// Hands the settings to the player: `aPairs` is a list of "KEY=VALUE" that a null pointer ends, or null.
/// Throws `Failure` for keys that are not there and for values that the library takes as the program's mistake.
void Configure(Player::MediaHandler& aPlayer, bool aInterleaved, const char* const* aPairs);

}  // namespace Virertsp
