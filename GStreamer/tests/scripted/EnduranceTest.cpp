#include <gtest/gtest.h>

#include <iostream>

#include "Player/MediaPlayer.hpp"
#include "support/ElementUnderTest.hpp"
#include "support/Footprint.hpp"
#include "support/MoodyServer.hpp"
#include "support/TimersRun.hpp"
#include "threads/PlayerAccess.hpp"

namespace ElementTest {
namespace {

using TestSupport::Footprint;
using TestSupport::MoodyServer;
using TestSupport::Repetitions;

/// GLib and GStreamer keep a little for each name and thread that they have seen.
constexpr std::size_t kHeapMargin = 128 * 1024;
constexpr std::size_t kThreadMargin = 2;
/// A server may not have noticed yet that its client has gone.
constexpr std::size_t kDescriptorMargin = 2;

class EnduranceLong : public testing::Test {
protected:
    EnduranceLong() {
        nsGstVireRtspSrc::PlayerAccess::SetMaker([] {
            auto* const lPlayer = new Player::MediaPlayer;
            lPlayer->SetConfigParam("RTSP:TargetRTPBuffer", "0");
            return lPlayer;
        });
    }
    ~EnduranceLong() override { nsGstVireRtspSrc::PlayerAccess::SetMaker(nullptr); }

    const TimersRun mTimers;

    /// Does it so often, and looks whether the process has grown since a tenth of that.
    static void Repeat(const char* aWhat, unsigned aTimes, const std::function<void(unsigned)>& aAction) {
        Footprint lBefore{};
        for (unsigned i = 0; i < aTimes; ++i) {
            if (aTimes / 10 == i) { lBefore = Footprint::Now(); }
            aAction(i);
        }
        const Footprint lAfter = Footprint::Now();
        std::cout << aTimes << " " << aWhat << ": " << lBefore << " after a tenth, " << lAfter << " at the end\n";
        EXPECT_LE(lAfter.mDescriptors, lBefore.mDescriptors + kDescriptorMargin);
        // The pool of threads that tasks run on may have one at rest, or more.
        EXPECT_LE(lAfter.mThreads, lBefore.mThreads + kThreadMargin);
        EXPECT_LE(lAfter.mHeap, lBefore.mHeap + kHeapMargin);
    }

    MoodyServer mServer;
};

TEST_F(EnduranceLong, ElementsAreMadeAndDisposedOf) {
    Repeat("elements made, played and disposed of", Repetitions(1000), [this](unsigned) {
        ElementUnderTest lElement;
        ASSERT_TRUE(lElement.Play(mServer.URL().c_str()));
        ASSERT_TRUE(lElement.Sink(0)->Await("buffer"));
    });
}

TEST_F(EnduranceLong, TheChannelIsChangedWhilePlaying) {
    MoodyServer lOther;
    ElementUnderTest lElement;
    ASSERT_TRUE(lElement.Play(mServer.URL().c_str()));
    Repeat("channel changes", Repetitions(200), [&](unsigned aTime) {
        lElement.Sink(0)->Clear();
        lElement.Sink(1)->Clear();
        const std::string lLocation = 0 == aTime % 3 ? mServer.URL("live") : (1 == aTime % 3 ? lOther : mServer).URL();
        lElement.SetText("location", lLocation.c_str());
        ASSERT_TRUE(lElement.Sink(0)->Await("buffer"));
        lElement.TakeMessages();
    });
}

}  // namespace
}  // namespace ElementTest
