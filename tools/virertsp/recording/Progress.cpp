#include "recording/Progress.hpp"

#include <unistd.h>

#include <cinttypes>

#include "Player/String.hpp"

namespace Virertsp {

namespace {

constexpr std::chrono::milliseconds kInterval(500);
/// Back to the line's beginning, and clear up to its end.
constexpr char kNewLine[] = "\r\033[K";

long long Tenths(const Player::Time& aTime) {
    return aTime.Scale(10, 1, true);
}

}  // namespace

Totals Totals::Of(const Player::MediaPlayer& aPlayer) {
    Totals lTotals;
    for (Player::TrackIdx lTrack = 0; lTrack < aPlayer.GetTrackCount(); ++lTrack) {
        const Player::Reception lReception = aPlayer.GetTrackReception(lTrack);
        lTotals.mPackets += lReception.mPacketsReceived;
        lTotals.mLost += lReception.Missing();
        lTotals.mBytes += lReception.mBytes;
        if (lReception.mCurrentTime > lTotals.mTime) { lTotals.mTime = lReception.mCurrentTime; }
        if (0 == lTrack || lReception.mBufferedTime < lTotals.mBuffered) {
            lTotals.mBuffered = lReception.mBufferedTime;
        }
    }
    return lTotals;
}

std::string FormatTime(const Player::Time& aTime) {
    const long long lTenths = Tenths(aTime);
    const long long lSeconds = lTenths / 10;
    const std::string lText =
        Player::StringWithFormat("%02lld:%02lld.%lld", lSeconds / 60 % 60, lSeconds % 60, lTenths % 10);
    return lSeconds < 3600 ? lText : Player::StringWithFormat("%lld:", lSeconds / 3600) + lText;
}

std::string FormatProgress(const Totals& aTotals, std::uint64_t aKiloBitsPerSecond) {
    const long long lBuffered = Tenths(aTotals.mBuffered);
    // Until enough is gathered nothing has a time.
    const std::string lWhere = Player::Time(0) == aTotals.mTime ? "buffering" : FormatTime(aTotals.mTime);
    return lWhere + Player::StringWithFormat(
                        "  %" PRIu64 " packets, %" PRId64 " lost, %" PRIu64 " kbit/s, %lld.%lld s buffered",
                        aTotals.mPackets, aTotals.mLost, aKiloBitsPerSecond, lBuffered / 10, lBuffered % 10);
}

Progress::Progress(std::FILE* aTerminal)
    : mTerminal(aTerminal), mEnabled(0 != isatty(fileno(aTerminal))), mLast(Clock::now()) {}

bool Progress::Update(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) {
    if (mEnabled && aNow - mLast >= kInterval) { Show(Totals::Of(aPlayer), aNow); }
    return true;
}

void Progress::Show(const Totals& aTotals, Clock::time_point aNow) {
    const auto lElapsed = std::chrono::duration_cast<std::chrono::milliseconds>(aNow - mLast).count();
    // A seek lets the counters start anew.
    const std::uint64_t lBytes = aTotals.mBytes > mLastBytes ? aTotals.mBytes - mLastBytes : 0;
    const std::uint64_t lRate = lBytes * 8 / static_cast<std::uint64_t>(lElapsed);
    std::fprintf(mTerminal, "%s%s", kNewLine, FormatProgress(aTotals, lRate).c_str());
    std::fflush(mTerminal);
    mShown = true;
    mLast = aNow;
    mLastBytes = aTotals.mBytes;
}

void Progress::Conclude(const Player::MediaPlayer& /*aPlayer*/, Clock::time_point /*aNow*/) {
    if (mShown) { std::fputs(kNewLine, mTerminal); }
    mShown = false;
}

}  // namespace Virertsp
