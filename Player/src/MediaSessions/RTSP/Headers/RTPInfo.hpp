#pragma once

#include <optional>
#include <string>
#include <vector>

#include "MediaSessions/RTSP/Headers/TransportHeader.hpp"

namespace Player::MediaSessions {

/// The RTP-Info header of a PLAY response (RFC 2326 section 12.33): where in their RTP streams the tracks begin.
struct RTPInfo {
    struct Entry {
        /// Empty when the entry does not begin with one.
        std::string mURL;
        /// The part of the URL after its last "/"; absent without a "/".
        std::optional<std::string> mName;
        TransportHeader mVars;
    };

    /// In the order sent. What follows 16384 entries is not read.
    static std::vector<Entry> Parse(const std::string& aValue);
};

}  // namespace Player::MediaSessions
