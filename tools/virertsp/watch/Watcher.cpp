#include "watch/Watcher.hpp"

#include "Player/Pace.hpp"
#include "recording/Intake.hpp"
#include "recording/Reconnection.hpp"

namespace Virertsp {

namespace {

using Clock = Location::Clock;

/// A session that lasted so long was a good one.
constexpr std::chrono::seconds kGood(30);
constexpr std::chrono::milliseconds kGlance(50);

}  // namespace

Watcher::Watcher(const SessionOptions& aSession, const std::string& aURL)
    : mSession(aSession), mURL(aURL), mThread([this] { Run(); }) {}

Watcher::~Watcher() {
    Stop();
    mThread.join();
}

void Watcher::Run() {
    Pauses lPauses;
    while (!mStop) {
        const Clock::time_point lStart = Clock::now();
        const std::string lReason = PlayOnce();
        if (mStop) { break; }
        if (Clock::now() - lStart >= kGood) { lPauses.Reset(); }
        const Clock::time_point lRetry = Clock::now() + lPauses.Next();
        mLocation.Failed(lReason, lRetry);
        Pause(lRetry);
    }
    mEnded = true;
}

std::string Watcher::PlayOnce() {
    mLocation.Connecting();
    ProbePlayer lPlayer;
    std::string lReason;
    try {
        mSession.Play(lPlayer, mURL);
        lReason = Receive(lPlayer);
    } catch (const Player::Exception& lException) {
        lReason = Explain(lException, mURL).what();
    } catch (const std::exception& lFailure) { lReason = lFailure.what(); }
    CloseQuietly(lPlayer);
    return lReason;
}

std::string Watcher::Receive(ProbePlayer& aPlayer) {
    Intake lIntake(aPlayer);
    Player::Pace lPace;
    std::uint64_t lPackets = 0;
    while (!mStop) {
        lIntake.Take([](Player::TrackIdx /*aTrack*/, const Intake::Sample& /*aSample*/) {}, Clock::now());
        const Totals lTotals = Totals::Of(aPlayer);
        mLocation.Received(lTotals);
        if (aPlayer.IsEnded()) { return aPlayer.HasTimedOut() ? "Media stopped coming." : "The server ended it."; }
        const std::uint64_t lMore = lTotals.mPackets > lPackets ? lTotals.mPackets - lPackets : 0;
        lPackets = lTotals.mPackets;
        std::this_thread::sleep_for(lPace.Next(static_cast<unsigned>(lMore)));
    }
    return std::string();
}

void Watcher::Pause(Clock::time_point aUntil) const {
    while (!mStop && Clock::now() < aUntil) {
        std::this_thread::sleep_for(kGlance);
    }
}

}  // namespace Virertsp
