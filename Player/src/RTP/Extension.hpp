#pragma once

#include <cstdint>
#include <limits>
#include <optional>

#include "Player/Types.hpp"

namespace Player::RTP {

/// Turns numbers that wrap (`Number`) into an endless count (`Wide`): 0 for the first number of the play
/// range, plus an offset. A number up to half its range behind the highest one so far is an older one.
template <typename Number, typename Wide>
class Extension {
public:
    /// Where a number belongs.
    struct Place {
        Number mNumber;
        /// How often the count had wrapped there.
        Wide mCycle;
        /// It came after a higher one.
        bool mIsOlder;
        Wide mExtended;
    };

    Number Base() const { return mBase; }
    Number Highest() const { return mHighest; }
    Number Cycles() const { return mCycles; }
    /// From the base to the highest number, both included.
    Wide Expected() const { return Count(mCycles, mHighest) - mBase + 1; }

    /// A new play range begins here. The count goes on from where it is, or that many numbers further.
    void SetBase(Number aBase, Wide aStep = 0) {
        mOffset += Count(mCycles, mHighest) - mBase + aStep;
        mLead = 0;
        StartAt(aBase);
    }
    /// The play range begins there instead, as far before or after the base as it is: nothing has been seen of it.
    void MoveBase(Number aBase) { StartAt(aBase); }
    /// Numbers up to `aLead` before the base belong to the play range as well; they count below 0.
    void Admit(Number aLead) { mLead = aLead; }
    /// The play range begins with the first number seen. A base of 0 stands for "not known".
    void LearnBase(Number aNumber) {
        if (0 == mBase) { mBase = mHighest = aNumber; }
    }
    /// What the base itself counts as.
    void SetOffset(Wide aOffset) { mOffset = aOffset; }
    /// Back to the base, which counts as 0 again.
    void Restart() {
        mOffset = 0;
        StartAt(mBase);
    }

    /// Nothing when the number lies before the play range. Changes nothing: `Accept` does.
    std::optional<Place> Find(Number aNumber) const {
        Wide lCycle = mCycles;
        const bool lIsOlder = static_cast<Number>(aNumber - mHighest) > std::numeric_limits<Number>::max() / 2;
        if (lIsOlder) {
            if (aNumber > mHighest) { --lCycle; }
            const bool lIsBefore = lCycle > mCycles || (0 == lCycle && aNumber < mBase);
            if (lIsBefore && static_cast<Number>(mBase - aNumber) > mLead) { return std::nullopt; }
        } else if (aNumber < mHighest) {
            ++lCycle;
        }
        return Place{aNumber, lCycle, lIsOlder, Count(lCycle, aNumber) + mOffset - mBase};
    }

    void Accept(const Place& aPlace) {
        if (aPlace.mIsOlder) { return; }
        mCycles = static_cast<Number>(aPlace.mCycle);
        mHighest = aPlace.mNumber;
    }

private:
    static Wide Count(Wide aCycle, Number aNumber) { return aCycle << std::numeric_limits<Number>::digits | aNumber; }

    void StartAt(Number aBase) {
        mCycles = 0;
        mBase = mHighest = aBase;
    }

    Number mBase = 0;
    Number mHighest = 0;
    Number mCycles = 0;
    Number mLead = 0;
    Wide mOffset = 0;
};

using SequenceExtension = Extension<std::uint16_t, std::uint32_t>;
using TimestampExtension = Extension<std::uint32_t, std::uint64_t>;

}  // namespace Player::RTP
