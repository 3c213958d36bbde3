#include "Direction.hpp"

#include <algorithm>

namespace Networks {

Direction::Direction(const Conditions& aConditions, unsigned aNumber)
    : mConditions(aConditions), mRandom(aConditions.mSeed * 2 + aNumber) {}

Direction::Fate Direction::Take(const Packet& aPacket, double aNow) {
    // Always as many draws, so that the fate of a packet depends on its place in the row alone.
    const double lLoss = Draw();
    const double lReorder = Draw();
    const double lDuplicate = Draw();
    const double lJitter = Draw() * mConditions.mJitter;
    const double lCopyLag = Draw() * Conditions::kCopyLag;

    Fate lFate;
    lFate.mIsLost = lLoss < mConditions.mLoss || IsDown(aNow) || IsFull(aNow);
    if (lFate.mIsLost) { return lFate; }
    lFate.mIsHeld = lReorder < mConditions.mReorder;
    lFate.mIsCopied = lDuplicate < mConditions.mDuplicate;

    mBusyUntil = std::max(mBusyUntil, aNow);
    if (mConditions.mRate > 0) { mBusyUntil += static_cast<double>(aPacket.size()) * 8 / mConditions.mRate; }
    mLastDue = std::max(mLastDue, mBusyUntil + mConditions.mDelay + lJitter);
    const double lDue = lFate.mIsHeld ? mLastDue + mConditions.mHold : mLastDue;
    Send(aPacket, lDue);
    if (lFate.mIsCopied) { Send(aPacket, lDue + lCopyLag); }
    return lFate;
}

std::optional<double> Direction::NextDue() const {
    if (mWaiting.empty()) { return std::nullopt; }
    return mWaiting.top().mDue;
}

std::optional<Packet> Direction::Give(double aNow) {
    if (mWaiting.empty() || mWaiting.top().mDue > aNow) { return std::nullopt; }
    Packet lPacket = mWaiting.top().mPacket;
    mWaiting.pop();
    return lPacket;
}

double Direction::Draw() {
    return static_cast<double>(mRandom()) / 4294967296.0;
}

bool Direction::IsDown(double aNow) const {
    return mConditions.mDownFrom <= aNow && aNow < mConditions.mDownTo;
}

bool Direction::IsFull(double aNow) const {
    return (mBusyUntil - aNow) * mConditions.mRate / 8 > mConditions.mQueue;
}

void Direction::Send(const Packet& aPacket, double aDue) {
    mWaiting.push({aDue, mSent++, aPacket});
}

}  // namespace Networks
