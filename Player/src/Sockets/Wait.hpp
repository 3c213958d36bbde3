#pragma once

#include <chrono>

#include "Player/Types.hpp"

namespace Player::Sockets {

enum class Readiness { kReadable, kWritable };

/// Waits with `select` until the descriptor is ready, at most that many seconds (0: only asks). Signals do
/// not end the wait, and the number of the descriptor is not limited.
/// Returns 1 when it is ready, 0 when the time is over, -1 with `errno` when `select` failed.
SInt Wait(SInt aSocket, Readiness aFor, UInt aTimeoutSec);
/// As `Wait`, until that time.
SInt WaitUntil(SInt aSocket, Readiness aFor, std::chrono::steady_clock::time_point aDeadline);

}  // namespace Player::Sockets
