#include "support/Patience.hpp"

#include <poll.h>

#include <thread>

namespace TestSupport {

namespace {

/// What was sent over the loopback before a stop is there by then, also on a busy machine.
constexpr std::chrono::milliseconds kGrace(1000);
/// How late a wait notices a stop.
constexpr int kSliceMs = 10;

}  // namespace

void Patience::Stop() {
    mStopTime = Clock::now();
    mStopped = true;
}

bool Patience::Over(Clock::time_point aSince) const {
    const auto lNow = Clock::now();
    return lNow - aSince > mPatience || (mStopped && lNow - mStopTime.load() > kGrace);
}

bool Patience::Readable(int aSocket) const {
    const auto lSince = Clock::now();
    pollfd lPoll = {aSocket, POLLIN, 0};
    while (poll(&lPoll, 1, kSliceMs) <= 0) {
        if (Over(lSince)) { return false; }
    }
    return true;
}

bool Patience::Until(const std::function<bool()>& aCondition) const {
    const auto lSince = Clock::now();
    while (!aCondition()) {
        if (Over(lSince)) { return false; }
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return true;
}

}  // namespace TestSupport
