#include "recording/Reconnection.hpp"

#include <algorithm>
#include <thread>

#include "Diagnostics.hpp"
#include "Failure.hpp"
#include "Player/String.hpp"
#include "commands/Interrupt.hpp"

namespace Virertsp {

namespace {

using Clock = Observer::Clock;

constexpr std::chrono::seconds kLongest(60);
/// A session that lasted so long was a good one.
constexpr std::chrono::seconds kGood(30);
constexpr std::chrono::milliseconds kGlance(50);

/// A server that is there once may refuse or say nonsense while it starts anew; before that, it means it.
bool CanHeal(const Failure& aFailure, bool aBegunBefore) {
    switch (aFailure.Code()) {
        case kExitNetwork:
        case kExitTimeOut: return true;
        case kExitRefused:
        case kExitProtocol: return aBegunBefore;
        default: return false;
    }
}

void Sleep(std::chrono::seconds aPause) {
    const Clock::time_point lEnd = Clock::now() + aPause;
    while (!Interrupted() && Clock::now() < lEnd) {
        std::this_thread::sleep_for(kGlance);
    }
}

}  // namespace

std::chrono::seconds Pauses::Next() {
    const std::chrono::seconds lPause = mNext;
    mNext = std::min(2 * mNext, kLongest);
    return lPause;
}

void RecordSessions(const SessionOptions& aSession, Recorder::Settings aSettings, Observer& aObserver) {
    Pauses lPauses;
    bool lBegunBefore = false;
    while (!Interrupted()) {
        const Clock::time_point lStart = Clock::now();
        unsigned lNextPart = aSettings.mPart;
        try {
            return RecordSession(aSession, aSettings, aObserver, true, &lNextPart);
        } catch (const Failure& lFailure) {
            lBegunBefore = lBegunBefore || lNextPart != aSettings.mPart;
            if (Interrupted() || !CanHeal(lFailure, lBegunBefore)) { throw; }
            if (Clock::now() - lStart >= kGood) { lPauses.Reset(); }
            const std::chrono::seconds lPause = lPauses.Next();
            PrintWarning(Player::StringWithFormat("%s Trying again in %d s.", lFailure.what(),
                                                  static_cast<int>(lPause.count())));
            Sleep(lPause);
        }
        aSettings.mPart = lNextPart;
    }
}

}  // namespace Virertsp
