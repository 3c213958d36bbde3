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

/// Name and password as the URL has them, with the colon between them: what stands before the last "@" of the
/// authority. Passwords are found with an "@" that was not encoded.
std::string UserInfoText(const std::string& aURL);
/// The URL, or authority, without user information, fit to be shown.
std::string WithoutUserInfo(const std::string& aURL);

}  // namespace Player::URL
