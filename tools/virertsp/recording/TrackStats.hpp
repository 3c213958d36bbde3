#pragma once

#include <string>

#include "Player/Reception.hpp"

namespace Virertsp {

/// The reception of one track over time, as lines for people or for programs.
class TrackStats {
public:
    TrackStats(unsigned aTrack, const std::string& aFormat) : mTrack(aTrack), mFormat(aFormat) {}

    /// Names the columns of `Row`.
    static std::string Heading();

    /// Takes the figures at `aSeconds` after the start.
    void Update(const Player::Reception& aReception, double aSeconds);

    /// The latest figures.
    std::string Row() const;
    std::string JsonRow() const;
    /// All of it.
    std::string Summary() const;
    std::string JsonSummary() const;

private:
    double MeanRate() const;

    unsigned mTrack;
    std::string mFormat;
    Player::Reception mReception;
    double mSeconds = 0;
    /// kbit/s since the update before.
    double mRate = 0;
    double mJitterPeak = 0;
};

}  // namespace Virertsp
