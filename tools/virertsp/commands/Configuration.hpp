#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Player/MediaHandler.hpp"

namespace Virertsp {

/// What `--transport` takes.
constexpr const char* kTransports[] = {"udp", "tcp", "udp,tcp"};

/// The keys that `--config` takes, each with its meaning.
std::vector<std::pair<std::string, std::string>> ConfigurationKeys();
/// The keys and their meanings, as lines for the help.
std::string ConfigurationHelp();

using Values = std::map<std::string, std::string>;

/// Hands the settings to the player: `aValues`, and over them `aPairs`, a list of "KEY=VALUE" that a null pointer ends,
/// or null. Throws `Failure` for keys that are not there and for values that the library takes as the program's
/// mistake.
void Configure(Player::MediaHandler& aPlayer, Values aValues, const char* const* aPairs);

}  // namespace Virertsp
