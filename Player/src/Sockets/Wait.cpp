#include "Sockets/Wait.hpp"

#include <sys/select.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <vector>

namespace Player::Sockets {

namespace {

using Clock = std::chrono::steady_clock;

/// One descriptor in a set for `select`. The system knows the set as a row of unsigned longs and reads as
/// many as the highest descriptor asks for; `fd_set` would end at 1024.
class DescriptorSet {
public:
    explicit DescriptorSet(SInt aSocket) : mIdx(static_cast<std::size_t>(aSocket)) {
        if (mIdx >= kInlineWords * kBitsPerWord) { mMore.resize(mIdx / kBitsPerWord + 1); }
    }

    /// `select` leaves only ready descriptors in the set, so each call needs it filled anew.
    fd_set* Fill() {
        unsigned long* const lWords = mMore.empty() ? mInline : mMore.data();
        lWords[mIdx / kBitsPerWord] = 1UL << mIdx % kBitsPerWord;
        return reinterpret_cast<fd_set*>(lWords);
    }

private:
    static constexpr std::size_t kBitsPerWord = sizeof(unsigned long) * CHAR_BIT;
    static constexpr std::size_t kInlineWords = FD_SETSIZE / kBitsPerWord;

    std::size_t mIdx;
    unsigned long mInline[kInlineWords] = {};
    std::vector<unsigned long> mMore;
};

/// The time until `aDeadline` for one call: never negative, and short enough for a 32-bit `time_t`.
timeval LeftUntil(Clock::time_point aDeadline) {
    using std::chrono::microseconds;
    constexpr microseconds kLongest = std::chrono::hours(24);
    const auto lLeft = std::chrono::ceil<microseconds>(aDeadline - Clock::now());
    const auto lMicroseconds = std::clamp(lLeft, microseconds::zero(), kLongest).count();
    timeval lTime{};
    lTime.tv_sec = static_cast<decltype(lTime.tv_sec)>(lMicroseconds / 1000000);
    lTime.tv_usec = static_cast<decltype(lTime.tv_usec)>(lMicroseconds % 1000000);
    return lTime;
}

}  // namespace

SInt Wait(SInt aSocket, Readiness aFor, UInt aTimeoutSec) {
    return WaitUntil(aSocket, aFor, Clock::now() + std::chrono::seconds(aTimeoutSec));
}

SInt WaitUntil(SInt aSocket, Readiness aFor, Clock::time_point aDeadline) {
    if (aSocket < 0) {
        errno = EBADF;
        return -1;
    }
    DescriptorSet lSet(aSocket);
    for (;;) {
        timeval lLeft = LeftUntil(aDeadline);
        fd_set* const lReadable = Readiness::kReadable == aFor ? lSet.Fill() : nullptr;
        fd_set* const lWritable = Readiness::kWritable == aFor ? lSet.Fill() : nullptr;
        const int lResult = select(aSocket + 1, lReadable, lWritable, nullptr, &lLeft);
        if (0 < lResult) { return 1; }
        if (lResult < 0 && EINTR != errno) { return -1; }
        if (Clock::now() >= aDeadline) { return 0; }
    }
}

}  // namespace Player::Sockets
