#pragma once

#include "Player/Time.hpp"

namespace Player {

/// Has `Time::Now()` read this clock in the whole process; null returns to the wall clock. For tests: set while nothing
/// plays, it makes hours pass at once.
void SetClock(Time (*aClock)());

}  // namespace Player
