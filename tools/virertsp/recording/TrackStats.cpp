#include "recording/TrackStats.hpp"

#include "Ending.hpp"
#include "Json.hpp"
#include "Player/String.hpp"
#include "Printable.hpp"

namespace Virertsp {

namespace {

constexpr double kMilli = 1000;

double KiloBits(std::uint64_t aBytes, double aSeconds) {
    return aSeconds > 0 ? static_cast<double>(aBytes) * 8 / kMilli / aSeconds : 0;
}

double JitterMs(const Player::Reception& aReception) {
    return aReception.mJitter.ToSeconds() * kMilli;
}

void AddCounters(const Player::Reception& aReception, Json& aJson) {
    aJson.Key("packets").Number(aReception.mPacketsReceived);
    aJson.Key("lost").Number(aReception.Missing());
    aJson.Key("reordered").Number(aReception.mPacketsReordered);
    aJson.Key("duplicates").Number(aReception.mPacketsDuplicate);
}

}  // namespace

std::string TrackStats::Heading() {
    return " time/s  track  format           packets    lost  reordered  duplicates  jitter/ms    kbit/s  buffered/s\n";
}

void TrackStats::Update(const Player::Reception& aReception, double aSeconds) {
    // A seek lets the counters start anew.
    const std::uint64_t lBefore = mReception.mBytes <= aReception.mBytes ? mReception.mBytes : 0;
    mRate = KiloBits(aReception.mBytes - lBefore, aSeconds - mSeconds);
    mReception = aReception;
    mSeconds = aSeconds;
    if (JitterMs(aReception) > mJitterPeak) { mJitterPeak = JitterMs(aReception); }
}

double TrackStats::MeanRate() const {
    return KiloBits(mReception.mBytes, mSeconds);
}

std::string TrackStats::Row() const {
    return Player::StringWithFormat("%7.1f  %5u  %-15s  %7u  %6d  %9u  %10u  %9.3f  %8.1f  %10.2f\n", mSeconds, mTrack,
                                    Printable(mFormat).c_str(), mReception.mPacketsReceived, mReception.Missing(),
                                    mReception.mPacketsReordered, mReception.mPacketsDuplicate, JitterMs(mReception),
                                    mRate, mReception.mBufferedTime.ToSeconds());
}

std::string TrackStats::JsonRow() const {
    Json lJson;
    lJson.Open('{').Key("type").String("track").Key("time_s").Decimal(mSeconds, 3);
    lJson.Key("track").Number(mTrack).Key("format").String(mFormat);
    AddCounters(mReception, lJson);
    lJson.Key("jitter_ms").Decimal(JitterMs(mReception), 3).Key("kbit_per_s").Decimal(mRate, 1);
    lJson.Key("buffered_s").Decimal(mReception.mBufferedTime.ToSeconds(), 3).Close();
    return lJson.Text() + "\n";
}

std::string TrackStats::Summary() const {
    return Player::StringWithFormat(
        "track %u: %s, %.1f s, %u packets, %d lost, %u reordered, %u duplicates, "
        "jitter up to %.3f ms, %.1f kbit/s, %s\n",
        mTrack, Printable(mFormat).c_str(), mSeconds, mReception.mPacketsReceived, mReception.Missing(),
        mReception.mPacketsReordered, mReception.mPacketsDuplicate, mJitterPeak, MeanRate(),
        EndingPhrase(mReception.mEnd));
}

std::string TrackStats::JsonSummary() const {
    Json lJson;
    lJson.Open('{').Key("type").String("summary").Key("time_s").Decimal(mSeconds, 3);
    lJson.Key("track").Number(mTrack).Key("format").String(mFormat);
    AddCounters(mReception, lJson);
    lJson.Key("jitter_peak_ms").Decimal(mJitterPeak, 3).Key("kbit_per_s").Decimal(MeanRate(), 1);
    lJson.Key("bytes").Number(static_cast<std::int64_t>(mReception.mBytes));
    lJson.Key("end").String(EndingName(mReception.mEnd)).Close();
    return lJson.Text() + "\n";
}

}  // namespace Virertsp
