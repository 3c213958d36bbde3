#include "watch/Location.hpp"

#include <ctime>

namespace Virertsp {

void Location::Connecting() {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mView.mState = State::kConnecting;
    mView.mTotals = Totals();
    ++mView.mSession;
}

void Location::Received(const Totals& aTotals) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mView.mState = aTotals.mTime > Player::Time(0) ? State::kPlaying : State::kBuffering;
    mView.mTotals = aTotals;
}

void Location::Failed(const std::string& aSentence, Clock::time_point aRetry) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mView.mState = State::kWaiting;
    mView.mFailure = aSentence;
    mView.mFailedAt = std::time(nullptr);
    mView.mRetry = aRetry;
}

Location::View Location::Look() const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    return mView;
}

const char* StateName(Location::State aState) {
    switch (aState) {
        case Location::State::kConnecting: return "connecting";
        case Location::State::kBuffering: return "buffering";
        case Location::State::kPlaying: return "playing";
        case Location::State::kWaiting: break;
    }
    return "waiting";
}

}  // namespace Virertsp
