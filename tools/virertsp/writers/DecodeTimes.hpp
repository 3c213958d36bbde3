#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <set>

namespace Virertsp {

/// Makes decode times, which RTP does not carry, for samples that come in decode order with their play times: as many
/// samples are looked ahead as an encoder may reorder. Times are ticks of any clock.
class DecodeTimes {
public:
    struct Times {
        std::int64_t mPlay;
        std::int64_t mDecode;
    };

    explicit DecodeTimes(std::size_t aLookAhead) : mLookAhead(aLookAhead) {}

    void Push(std::int64_t aPlay);
    /// Of the oldest sample, once enough is known, or with `aLast` in any case; nothing when there is none. Decode
    /// times grow strictly, and no sample is played before it is decoded.
    std::optional<Times> Pop(bool aLast);

private:
    /// By how much the first samples' places in the order of play run ahead of their play times.
    std::int64_t Delay() const;

    std::size_t mLookAhead;
    std::deque<std::int64_t> mPending;
    std::multiset<std::int64_t> mSorted;
    std::optional<std::int64_t> mDelay;
    std::optional<std::int64_t> mLast;
};

}  // namespace Virertsp
