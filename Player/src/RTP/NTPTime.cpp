#include "RTP/NTPTime.hpp"

namespace Player::RTP {

long long ToNTPRes(long long aValue, unsigned int aRes) {
    return Time(aValue, aRes, true).Get();
}

int ToRTPRes(long long aNTP, unsigned int aRes) {
    return static_cast<int>(Time(aNTP).Scale(aRes, 1, true));
}

UInt ToShortNTP(const Time& aTime) {
    return static_cast<UInt>(aTime.Scale(65536, 1));
}

}  // namespace Player::RTP
