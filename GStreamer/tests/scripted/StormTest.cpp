#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <sstream>

#include "Player/MediaPlayer.hpp"
#include "support/ElementUnderTest.hpp"
#include "support/MoodyServer.hpp"
#include "support/TimersRun.hpp"
#include "support/Watch.hpp"
#include "threads/PlayerAccess.hpp"

namespace ElementTest {
namespace {

using TestSupport::MoodyServer;
using Mood = MoodyServer::Mood;

constexpr unsigned kSteps = 50;
/// One step asks the server for no more than ten things and waits a second for each.
constexpr std::chrono::seconds kStepBound(30);

unsigned FromEnvironment(const char* aName, unsigned aDefault) {
    const char* const lValue = std::getenv(aName);
    return nullptr == lValue ? aDefault : static_cast<unsigned>(std::strtoul(lValue, nullptr, 10));
}

/// Waits a second where the library's own player waits ten, and for no media to be buffered.
Player::MediaPlayer* MakeImpatientPlayer() {
    auto* const lPlayer = new Player::MediaPlayer;
    lPlayer->SetConfigParam("RTSP:TargetRTPBuffer", "0");
    lPlayer->SetConfigParam("RTSP:TimeOutAfter", "1");
    lPlayer->SetConfigParam("RTSP:TimeOutRTPAfter", "1");
    return lPlayer;
}

/// The same numbers for the same seed.
class Dice {
public:
    explicit Dice(unsigned aSeed) : mNumbers(aSeed) {}
    unsigned Below(unsigned aEnd) { return static_cast<unsigned>(mNumbers() % aEnd); }

private:
    std::mt19937 mNumbers;
};

/// Three of four answers are good.
MoodyServer::Moods MoodsOf(unsigned aSeed) {
    const auto lDice = std::make_shared<Dice>(aSeed);
    return [lDice](const std::string&) {
        return 0 != lDice->Below(4) ? Mood::kFine : static_cast<Mood>(lDice->Below(MoodyServer::kMoods));
    };
}

/// An application that does this and that with one element, while two servers do as they like.
class Storm {
public:
    explicit Storm(unsigned aSeed)
        : mSeed(aSeed), mDice(aSeed), mFirst(MoodsOf(aSeed + 1)), mSecond(MoodsOf(aSeed + 2)) {}

    /// Tells how many requests the servers saw.
    unsigned Rage() {
        for (mStep = 0; mStep < kSteps; ++mStep) {
            Step();
        }
        Watched("to NULL at last", [this] { mElement.Set(GST_STATE_NULL); });
        EXPECT_EQ(GST_STATE_NULL, mElement.State()) << "storm " << mSeed;
        return mFirst.Requests() + mSecond.Requests();
    }

private:
    void Step() {
        static const GstState kStates[] = {GST_STATE_NULL, GST_STATE_READY, GST_STATE_PAUSED, GST_STATE_PLAYING,
                                           GST_STATE_PLAYING};
        switch (mDice.Below(8)) {
            case 0:
            case 1:
            case 2: {
                const GstState lState = kStates[mDice.Below(G_N_ELEMENTS(kStates))];
                Watched(std::string("to ") + gst_element_state_get_name(lState), [&] { mElement.Set(lState); });
                break;
            }
            case 3: {
                const unsigned lSecond = mDice.Below(60);
                Watched("seek", [&] { mElement.Seek(lSecond * GST_SECOND); });
                break;
            }
            case 4: {
                const std::string lLocation = Location();
                Watched("location " + lLocation, [&] { mElement.SetText("location", lLocation.c_str()); });
                break;
            }
            case 5: {
                const bool lAvailable = 0 != mDice.Below(3);
                Watched(lAvailable ? "network" : "no network", [&] { mElement.SetNetwork(lAvailable); });
                break;
            }
            default: {
                const unsigned lPause = mDice.Below(50);
                Watched("wait", [&] { g_usleep(lPause * 1000); });
            }
        }
    }

    std::string Location() {
        switch (mDice.Below(8)) {
            case 0: return "";
            case 1: return "rtsp://127.0.0.1:1/nobody";
            case 2: return mFirst.URL("live");
            case 3: return mSecond.URL("live");
            default: return (0 == mDice.Below(2) ? mFirst : mSecond).URL();
        }
    }

    void Watched(const std::string& aWhat, const std::function<void()>& aAction) {
        std::ostringstream lWhat;
        lWhat << "storm " << mSeed << ", step " << mStep << ": " << aWhat;
        const Watch lWatch(lWhat.str(), kStepBound);
        aAction();
    }

    const unsigned mSeed;
    unsigned mStep = 0;
    Dice mDice;
    MoodyServer mFirst;
    MoodyServer mSecond;
    ElementUnderTest mElement;
};

class StormSlow : public testing::Test {
protected:
    StormSlow() { nsGstVireRtspSrc::PlayerAccess::SetMaker(MakeImpatientPlayer); }
    ~StormSlow() override { nsGstVireRtspSrc::PlayerAccess::SetMaker(nullptr); }

    const TimersRun mTimers;
};

/// VIRE_STORMS says how many, VIRE_STORM_SEED where to begin.
TEST_F(StormSlow, EveryStepReturns) {
    const unsigned lFirst = FromEnvironment("VIRE_STORM_SEED", 1);
    const unsigned lCount = FromEnvironment("VIRE_STORMS", 2);
    unsigned lRequests = 0;
    for (unsigned lSeed = lFirst; lSeed < lFirst + lCount; ++lSeed) {
        lRequests += Storm(lSeed).Rage();
    }
    EXPECT_LT(10 * lCount, lRequests) << "not much of a storm";
}

}  // namespace
}  // namespace ElementTest
