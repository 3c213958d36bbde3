#pragma once

#include <optional>
#include <string>

#include "Player/Time.hpp"

namespace Player::MediaSessions {

/// The normal play time of a Range header (RFC 2326 section 12.29), such as "npt=12.5-20". An absent end is open.
struct Range {
    std::optional<Time> mStart;
    std::optional<Time> mEnd;

    /// Nothing when the header speaks of no normal play time.
    static std::optional<Range> Parse(const std::string& aValue);
};

}  // namespace Player::MediaSessions
