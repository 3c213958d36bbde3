#include "recording/Cutter.hpp"

#include <algorithm>

namespace Virertsp {

namespace {

/// When the leader is silent, at most this many seconds of the others wait for it.
constexpr Player::UInt kMostHeld = 5;

}  // namespace

Cutter::Cutter(const Split& aSplit, Player::TrackIdx aLeader, Coding aCoding, Sink aSink, Cut aCut)
    : mSplit(aSplit), mLeader(aLeader), mCoding(aCoding), mSink(std::move(aSink)), mCut(std::move(aCut)) {}

void Cutter::Take(Player::TrackIdx aTrack, const Sample& aSample) {
    if (mLeader == aTrack) { return TakeLeader(aSample); }
    if (aTrack >= mHeld.size()) { mHeld.resize(aTrack + 1); }
    mHeld[aTrack].push_back(aSample);
    Release(aTrack, false);
}

void Cutter::TakeLeader(const Sample& aSample) {
    const Player::Time lTime = aSample->PlayTime();
    if (!mStart) {
        mStart = mLatest = lTime;
    } else if (IsDue(aSample)) {
        mCut(lTime);
        mStart = lTime;
        mBytes = 0;
    }
    mLatest = std::max(mLatest, lTime);
    HandOn(mLeader, aSample);
    for (Player::TrackIdx lTrack = 0; lTrack < mHeld.size(); ++lTrack) {
        Release(lTrack, false);
    }
}

bool Cutter::IsDue(const Sample& aSample) const {
    const auto* const lData = reinterpret_cast<const char*>(aSample->Begin());
    return mSplit.IsDue(aSample->PlayTime() - *mStart, mBytes) && IsRandomAccess(mCoding, {lData, aSample->Size()});
}

void Cutter::HandOn(Player::TrackIdx aTrack, const Sample& aSample) {
    mBytes += aSample->Size();
    mSink(aTrack, aSample);
}

void Cutter::Release(Player::TrackIdx aTrack, bool aAll) {
    std::deque<Sample>& lHeld = mHeld[aTrack];
    const auto lMayGo = [&] {
        const Player::Time lTime = lHeld.front()->PlayTime();
        return aAll || (mStart && mLatest >= lTime) || lHeld.back()->PlayTime() - lTime > Player::Time(kMostHeld, 1);
    };
    while (!lHeld.empty() && lMayGo()) {
        const Sample lSample = lHeld.front();
        lHeld.pop_front();
        HandOn(aTrack, lSample);
    }
}

void Cutter::Flush() {
    for (Player::TrackIdx lTrack = 0; lTrack < mHeld.size(); ++lTrack) {
        Release(lTrack, true);
    }
}

}  // namespace Virertsp
