#pragma once

#include <cstdint>
#include <string>

#include "Player/Time.hpp"

namespace Virertsp {

/// When a recording goes on in new files: after this much play time, or after this many bytes. Never, when both are 0.
struct Split {
    /// A number with a unit: "90s", "10min", "1.5h"; "100MB", "512KiB". Throws `Failure`.
    static Split Of(const std::string& aText);

    bool IsWanted() const { return Player::Time(0) != mLength || 0 != mBytes; }
    /// Whether files that hold so much are full.
    bool IsDue(const Player::Time& aLength, std::uint64_t aBytes) const;

    Player::Time mLength;
    std::uint64_t mBytes = 0;
};

}  // namespace Virertsp
