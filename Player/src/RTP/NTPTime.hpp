#pragma once

#include "Player/Time.hpp"
#include "Player/Types.hpp"

namespace Player::RTP {

/// A count of 1 / `aRes` s as 32.32 fixed-point seconds, rounded to nearest. A resolution of 0 gives 0.
long long ToNTPRes(long long aValue, unsigned int aRes);
/// 32.32 fixed-point seconds in units of 1 / `aRes` s, rounded to nearest; the low 32 bits.
int ToRTPRes(long long aNTP, unsigned int aRes);
/// In units of 1 / 65536 s, as receiver reports count; the low 32 bits.
UInt ToShortNTP(const Time& aTime);

}  // namespace Player::RTP
