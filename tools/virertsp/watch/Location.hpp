#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

#include "recording/Progress.hpp"

namespace Virertsp {

/// One of the locations that are watched: what its thread reports, for the thread that shows it. Locked.
class Location {
public:
    using Clock = std::chrono::steady_clock;

    enum class State { kConnecting, kBuffering, kPlaying, kWaiting };

    /// What is known at one moment.
    struct View {
        State mState = State::kConnecting;
        /// Of the session: its counters start anew with each.
        unsigned mSession = 0;
        Totals mTotals;
        /// When the next attempt comes, while there is a pause.
        Clock::time_point mRetry;
        std::string mFailure;
        /// In seconds since the epoch; 0 without a failure.
        std::int64_t mFailedAt = 0;
    };

    void Connecting();
    void Received(const Totals& aTotals);
    void Failed(const std::string& aSentence, Clock::time_point aRetry);

    View Look() const;

private:
    mutable std::mutex mMutex;
    View mView;
};

/// "playing"
const char* StateName(Location::State aState);

}  // namespace Virertsp
