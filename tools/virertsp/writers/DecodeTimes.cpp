#include "writers/DecodeTimes.hpp"

#include <algorithm>

namespace Virertsp {

void DecodeTimes::Push(std::int64_t aPlay) {
    mPending.push_back(aPlay);
    mSorted.insert(aPlay);
}

std::int64_t DecodeTimes::Delay() const {
    std::int64_t lDelay = 0;
    auto lPlay = mPending.begin();
    for (const std::int64_t lSorted : mSorted) {
        lDelay = std::max(lDelay, lSorted - *lPlay++);
    }
    return lDelay;
}

std::optional<DecodeTimes::Times> DecodeTimes::Pop(bool aLast) {
    if (mPending.empty() || (!aLast && mPending.size() <= mLookAhead)) { return std::nullopt; }
    if (!mDelay) { mDelay = Delay(); }
    Times lTimes{mPending.front(), *mSorted.begin() - *mDelay};
    mPending.pop_front();
    mSorted.erase(mSorted.begin());
    if (mLast && lTimes.mDecode <= *mLast) { lTimes.mDecode = *mLast + 1; }
    lTimes.mPlay = std::max(lTimes.mPlay, lTimes.mDecode);
    mLast = lTimes.mDecode;
    return lTimes;
}

}  // namespace Virertsp
