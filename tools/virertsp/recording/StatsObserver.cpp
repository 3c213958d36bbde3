#include "recording/StatsObserver.hpp"

namespace Virertsp {

namespace {

constexpr std::chrono::seconds kInterval(1);

}  // namespace

StatsObserver::StatsObserver(bool aJson, double aSeconds, Print aPrint)
    : mJson(aJson), mLimit(aSeconds), mPrint(std::move(aPrint)) {}

bool StatsObserver::Update(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) {
    if (!mBegun) { Begin(aPlayer, aNow); }
    if (aNow >= mNext) {
        Take(aPlayer, aNow);
        for (const TrackStats& lTrack : mTracks) {
            mPrint(mJson ? lTrack.JsonRow() : lTrack.Row());
        }
        // However late this one was, the next ones keep to the full seconds.
        while (mNext <= aNow) {
            mNext += kInterval;
        }
    }
    return !(mLimit > 0 && SecondsUntil(aNow) >= mLimit);
}

void StatsObserver::Conclude(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) {
    if (!mBegun) { Begin(aPlayer, aNow); }
    Take(aPlayer, aNow);
    for (const TrackStats& lTrack : mTracks) {
        mPrint(mJson ? lTrack.JsonSummary() : lTrack.Summary());
    }
}

void StatsObserver::Begin(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) {
    mBegun = true;
    mStart = aNow;
    mNext = aNow + kInterval;
    for (Player::TrackIdx lTrack = 0; lTrack < aPlayer.GetTrackCount(); ++lTrack) {
        mTracks.emplace_back(lTrack, aPlayer.GetTrackInfo(lTrack)->Get("Format"));
    }
    if (!mJson) { mPrint(TrackStats::Heading()); }
}

void StatsObserver::Take(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) {
    Player::TrackIdx lIndex = 0;
    for (TrackStats& lTrack : mTracks) {
        lTrack.Update(aPlayer.GetTrackReception(lIndex++), SecondsUntil(aNow));
    }
}

double StatsObserver::SecondsUntil(Clock::time_point aNow) const {
    return std::chrono::duration<double>(aNow - mStart).count();
}

}  // namespace Virertsp
