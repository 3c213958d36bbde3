#pragma once

#include <functional>
#include <string>
#include <vector>

#include "recording/Observer.hpp"
#include "recording/TrackStats.hpp"

namespace Virertsp {

/// Prints every track's reception each second, and a summary at the end.
class StatsObserver : public Observer {
public:
    /// Takes one line or several.
    using Print = std::function<void(const std::string& aText)>;

    /// `aSeconds`: when to end; 0 for never. The time runs from the first update.
    StatsObserver(bool aJson, double aSeconds, Print aPrint);

    bool Update(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) override;
    void Conclude(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) override;

private:
    void Begin(const Player::MediaPlayer& aPlayer, Clock::time_point aNow);
    void Take(const Player::MediaPlayer& aPlayer, Clock::time_point aNow);
    double SecondsUntil(Clock::time_point aNow) const;

    bool mJson;
    double mLimit;
    Print mPrint;
    bool mBegun = false;
    Clock::time_point mStart;
    Clock::time_point mNext;
    std::vector<TrackStats> mTracks;
};

}  // namespace Virertsp
