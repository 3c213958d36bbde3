#pragma once

#include "Player/Time.hpp"

namespace Virertsp {

/// Seconds, to print or to compute rates with.
inline double ToSeconds(const Player::Time& aTime) {
    return static_cast<double>(aTime.Get()) / 4294967296.0;
}

}  // namespace Virertsp
