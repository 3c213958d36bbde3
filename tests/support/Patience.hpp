#pragma once

#include <atomic>
#include <chrono>
#include <functional>

namespace TestSupport {

/// Bounded waiting: nothing here blocks longer than the patience given, and another thread can cut it short.
class Patience {
public:
    explicit Patience(std::chrono::milliseconds aPatience) : mPatience(aPatience) {}

    /// From now on only a short grace is left to every wait, those under way included.
    void Stop();
    bool Stopped() const { return mStopped; }

    /// Waits for data, a connection or the end of one. False when none came in time.
    bool Readable(int aSocket) const;
    /// Looks at the condition again and again. False when it did not come true in time.
    bool Until(const std::function<bool()>& aCondition) const;

private:
    using Clock = std::chrono::steady_clock;

    bool Over(Clock::time_point aSince) const;

    std::chrono::milliseconds mPatience;
    std::atomic<bool> mStopped{false};
    std::atomic<Clock::time_point> mStopTime{Clock::time_point()};
};

}  // namespace TestSupport
