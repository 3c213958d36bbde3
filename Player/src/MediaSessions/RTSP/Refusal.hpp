#pragma once

#include <string>
#include <vector>

#include "MediaSessions/RTSP/Headers/Headers.hpp"
#include "Player/Types.hpp"

namespace Player::MediaSessions {

/// A response that was no success.
struct Refusal {
    /// Its digits read as a hexadecimal number: 0x404. 0 when the connection ended before a response came.
    UInt mStatus = 0;
    std::string mText;
    Headers mHeaders;
    /// What it asks to be answered: the values of its headers WWW-Authenticate, or Proxy-Authenticate, which may come
    /// more than once.
    std::vector<std::string> mChallenges;
};

}  // namespace Player::MediaSessions
