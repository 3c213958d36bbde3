#include "report/Findings.hpp"

#include <algorithm>
#include <cmath>

namespace Virertsp {

namespace {

/// The number of tracks that a session sets up at most.
constexpr double kMostTracks = 128;
/// Beyond any figure that is meant.
constexpr double kHighest = 1e12;

double Figure(const JsonValue& aValue) {
    return std::clamp(aValue.Number(), -kHighest, kHighest);
}

}  // namespace

bool Findings::Take(const std::string& aLine) {
    const auto lRead = JsonValue::Read(aLine);
    if (!lRead) { return false; }
    const JsonValue& lLine = *lRead;
    const std::string lType = lLine["type"].Text();
    if (lType.empty() && !lLine["url"].Text().empty()) {
        mPresentation = lLine;
        return true;
    }
    if ("failure" == lType) {
        mFailure = lLine["text"].Text();
        return true;
    }
    return TakeTrackLine(lLine, lType);
}

bool Findings::TakeTrackLine(const JsonValue& aLine, const std::string& aType) {
    const JsonValue& lNumber = aLine["track"];
    if (!lNumber.IsNumber() || !(lNumber.Number() >= 0 && lNumber.Number() < kMostTracks)) { return false; }
    const auto lIndex = static_cast<unsigned>(lNumber.Number());
    if ("picture" == aType) {
        mPictures.push_back({lIndex, Figure(aLine["play_s"]), aLine["jpeg"].Text()});
    } else if ("unit" == aType) {
        mTracks[lIndex].mUnits.push_back(Figure(aLine["play_s"]));
        if (aLine["key"].IsTrue()) { mTracks[lIndex].mKeys.push_back(Figure(aLine["play_s"])); }
    } else if ("track" == aType) {
        TakeRow(aLine, mTracks[lIndex]);
    } else if ("summary" == aType) {
        mTracks[lIndex].mFormat = aLine["format"].Text();
        mTracks[lIndex].mFigures = aLine;
    } else {
        return false;
    }
    return true;
}

void Findings::TakeRow(const JsonValue& aLine, Track& aTrack) {
    const double lTime = Figure(aLine["time_s"]);
    const double lLost = Figure(aLine["lost"]) - Figure(aTrack.mFigures["lost"]);
    aTrack.mFormat = aLine["format"].Text();
    aTrack.mRate.push_back({lTime, Figure(aLine["kbit_per_s"])});
    aTrack.mLost.push_back({lTime, lLost});
    aTrack.mJitter.push_back({lTime, Figure(aLine["jitter_ms"])});
    aTrack.mBuffered.push_back({lTime, Figure(aLine["buffered_s"])});
    aTrack.mFigures = aLine;
}

Findings::Points Findings::Intervals(std::vector<double> aPlayTimes) {
    // To a hundredth: what times lost on their way is no interval.
    const auto lMilliseconds = [](double aSeconds) { return std::round(aSeconds * 1e5) / 100; };
    // They came in decode order.
    std::sort(aPlayTimes.begin(), aPlayTimes.end());
    Points lPoints;
    for (std::size_t i = 1; i < aPlayTimes.size(); ++i) {
        lPoints.push_back({aPlayTimes[i], lMilliseconds(aPlayTimes[i] - aPlayTimes[i - 1])});
    }
    return lPoints;
}

}  // namespace Virertsp
