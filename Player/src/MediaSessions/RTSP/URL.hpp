#pragma once

#include <string>
#include <utility>

/// The parts of an RTSP URL.
namespace Player::URL {

/// What stands between the first "//" (or the start, when there is none) and the next "/" or the end.
std::string Authority(const std::string& aURL);

/// Host and port of an authority; the port is "554" when none is given. The host of an authority with user
/// information begins at the "@", which stays part of it.
std::pair<std::string, std::string> Address(const std::string& aAuthority);

}  // namespace Player::URL
