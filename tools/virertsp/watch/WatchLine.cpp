#include "watch/WatchLine.hpp"

#include <glib.h>

#include <algorithm>
#include <ctime>

#include "Player/String.hpp"
#include "Printable.hpp"

namespace Virertsp {

namespace {

using Player::StringWithFormat;

/// "12:34:56", local time.
std::string TimeOfDay(std::int64_t aSeconds) {
    const auto lSeconds = static_cast<std::time_t>(aSeconds);
    std::tm lTime = {};
    localtime_r(&lSeconds, &lTime);
    char lText[16] = {};
    std::strftime(lText, sizeof(lText), "%H:%M:%S", &lTime);
    return lText;
}

/// The location names the server already.
std::string WithoutServer(const std::string& aSentence) {
    constexpr char kServer[] = "The server ";
    constexpr std::size_t kSize = sizeof(kServer) - 1;
    const std::size_t lEnd = aSentence.find(' ', kSize);
    const bool lNames = 0 == aSentence.compare(0, kSize, kServer) && std::string::npos != lEnd;
    return lNames ? aSentence.substr(lEnd + 1) : aSentence;
}

}  // namespace

std::string Fitted(const std::string& aText, std::size_t aColumns) {
    const std::string lText = Printable(aText);
    std::string lFitted;
    std::size_t lColumns = 0;
    for (const char* lAt = lText.c_str(); '\0' != *lAt; lAt = g_utf8_next_char(lAt)) {
        const gunichar lCharacter = g_utf8_get_char(lAt);
        const std::size_t lWidth = 0 != g_unichar_iszerowidth(lCharacter) ? 0 : g_unichar_iswide(lCharacter) ? 2 : 1;
        if (lColumns + lWidth > aColumns) { break; }
        lFitted.append(lAt, static_cast<const char*>(g_utf8_next_char(lAt)));
        lColumns += lWidth;
    }
    return lFitted.append(aColumns - lColumns, ' ');
}

void WatchLine::Update(const Location::View& aView, Clock::time_point aNow) {
    const double lSeconds = std::chrono::duration<double>(aNow - mLast).count();
    // Each session counts anew.
    const Totals lBefore = aView.mSession == mView.mSession ? mView.mTotals : Totals();
    const auto lBytes = static_cast<double>(aView.mTotals.mBytes) - static_cast<double>(lBefore.mBytes);
    const auto lLost = static_cast<double>(aView.mTotals.mLost - lBefore.mLost);
    const auto lReceived = static_cast<double>(aView.mTotals.mPackets) - static_cast<double>(lBefore.mPackets);
    const double lExpected = lReceived + lLost;
    mKiloBits = lSeconds > 0 ? std::max(0., lBytes * 8 / 1000 / lSeconds) : 0;
    mLoss = lExpected > 0 ? std::clamp(100 * lLost / lExpected, 0., 100.) : 0;
    mView = aView;
    mLast = aNow;
}

std::string WatchLine::Heading(std::size_t aURLColumns) {
    return Fitted("location", aURLColumns) + "  state            kbit/s   loss    lost  last failure";
}

std::string WatchLine::StateText() const {
    if (Location::State::kWaiting != mView.mState) { return StateName(mView.mState); }
    const auto lLeft = std::chrono::duration_cast<std::chrono::seconds>(mView.mRetry - mLast).count();
    return StringWithFormat("waiting %d s", static_cast<int>(std::max<std::int64_t>(0, lLeft)));
}

std::string WatchLine::Text(std::size_t aURLColumns) const {
    const std::string lHead = Fitted(mURL, aURLColumns) + "  " + Fitted(StateText(), 12) + "  ";
    const std::string lFailure = 0 == mView.mFailedAt
                                     ? std::string()
                                     : TimeOfDay(mView.mFailedAt) + " " + Printable(WithoutServer(mView.mFailure));
    const bool lComesIn = Location::State::kPlaying == mView.mState || Location::State::kBuffering == mView.mState;
    // Without media the failure says more than figures of nothing.
    if (!lComesIn) { return lHead + lFailure; }
    const std::string lFigures =
        StringWithFormat("%9.1f  %4.1f%%  %6lld", mKiloBits, mLoss, static_cast<long long>(mView.mTotals.mLost));
    return lHead + lFigures + (lFailure.empty() ? "" : "  " + lFailure);
}

void WatchLine::AddTo(Json& aJson) const {
    aJson.Open('{').Key("url").String(mURL).Key("state").String(StateName(mView.mState));
    aJson.Key("session").Number(mView.mSession);
    aJson.Key("kbit_per_s").Decimal(mKiloBits, 1).Key("loss_percent").Decimal(mLoss, 1);
    aJson.Key("packets").Number(static_cast<std::int64_t>(mView.mTotals.mPackets));
    aJson.Key("lost").Number(mView.mTotals.mLost);
    aJson.Key("failure");
    mView.mFailure.empty() ? aJson.Null() : aJson.String(mView.mFailure);
    aJson.Key("failed_at");
    0 == mView.mFailedAt ? aJson.Null() : aJson.Number(mView.mFailedAt);
    aJson.Close();
}

}  // namespace Virertsp
