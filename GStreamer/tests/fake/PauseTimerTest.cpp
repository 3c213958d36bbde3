#include <atomic>
#include <chrono>
#include <thread>

#include "support/DebugCapture.hpp"
#include "support/SourceFixture.hpp"
#include "support/TimersRun.hpp"

// Tests that wait for the timer's 1.5 seconds.

namespace ElementTest {

namespace {

constexpr gint64 kSecond = 1000000000;
constexpr auto kLongerThanTheTimer = std::chrono::milliseconds(1900);

class PauseTimer : public SourceFixture {
protected:
    const TimersRun mTimers;
};

/// What the server has been asked when the system clock, which serves those who wait one after the other and in the
/// order of their times, gets to a time.
class CallsAt {
public:
    CallsAt(FakeServer& aServer, GstClockTime aFromNow) : mServer(aServer) {
        GstClock* const lClock = gst_system_clock_obtain();
        mId = gst_clock_new_single_shot_id(lClock, gst_clock_get_time(lClock) + aFromNow);
        gst_clock_id_wait_async_full(mId, OnTime, this, nullptr);
        gst_object_unref(lClock);
    }
    CallsAt(const CallsAt&) = delete;
    CallsAt& operator=(const CallsAt&) = delete;
    ~CallsAt() {
        Await();
        gst_clock_id_unref(mId);
    }

    /// Waits for the time to come.
    Texts Await() {
        EXPECT_TRUE(Eventually([this] { return mCome.load(); }));
        return mCalls;
    }

private:
    static gboolean OnTime(GstClock*, GstClockTime, GstClockID, gpointer aThis) {
        auto* const lThis = static_cast<CallsAt*>(aThis);
        lThis->mCalls = lThis->mServer.TakeCalls();
        lThis->mCome = true;
        return TRUE;
    }

    FakeServer& mServer;
    GstClockID mId;
    Texts mCalls;
    std::atomic<bool> mCome{false};
};

constexpr GstClockTime kTimer = 1500 * GST_MSECOND;
constexpr char kContinue[] = "Element in PLAYING state -> Continue";

}  // namespace

TEST_F(PauseTimer, AnElementThatStaysPausedHasItsServerPaused) {
    ServeH264();
    const DebugCapture lLog("virertsp_source");
    CallsAt lBefore(mServer, kTimer);
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    CallsAt lAfter(mServer, kTimer);
    EXPECT_EQ(Texts{"Play rtsp://host/clip 0.000000"}, lBefore.Await());
    EXPECT_EQ(Texts{"Pause"}, lAfter.Await());
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Element still in PAUSED state -> Pause server"));
    mServer.Push(0, kSecond, "x");
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(1U, mElement.Sink(0)->Count("flush-stop"));
}

TEST_F(PauseTimer, ALossBetweenPausingAndPlayingResumesWhereThereIsNoPosition) {
    ServeH264();
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    mServer.TakeCalls();
    ASSERT_TRUE(Eventually([this] { return Texts{"Pause"} == mServer.TakeCalls(); }));
    mElement.SetNetwork(false);
    mElement.Force(GST_STATE_PLAYING);
    mElement.SetNetwork(true);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
    mElement.Force(GST_STATE_PAUSED);
    mServer.Push(0, kSecond, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
}

TEST_F(PauseTimer, GoesOnWithAnElementThatDoesNotCountAsPlayingYet) {
    ServeH264();
    const DebugCapture lLog("virertsp_source");
    ASSERT_TRUE(mElement.Play());
    mServer.TakeCalls();
    // As if the time came while the transition is on its last steps.
    mElement.Force(GST_STATE_PAUSED);
    ASSERT_TRUE(Eventually([&lLog] { return 1 == lLog.Count(GST_LEVEL_DEBUG, kContinue); }));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    mElement.Force(GST_STATE_PLAYING);
}

TEST_F(PauseTimer, AnElementThatPlaysIsLeftAlone) {
    ServeH264();
    const DebugCapture lLog("virertsp_source");
    StartPlaying();
    ASSERT_TRUE(Eventually([&lLog] { return 1 == lLog.Count(GST_LEVEL_DEBUG, kContinue); }));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
}

TEST_F(PauseTimer, AnElementThatPlayedForAMomentHasItsServerPausedOnceMore) {
    ServeH264();
    StartPlaying();
    mElement.Set(GST_STATE_PAUSED);
    Texts lCalls;
    EXPECT_TRUE(Eventually([this, &lCalls] {
        for (const std::string& lCall : mServer.TakeCalls()) {
            lCalls.push_back(lCall);
        }
        return (Texts{"Pause", "Pause"}) == lCalls;
    }));
}

TEST_F(PauseTimer, ASeekIsForgottenOnTheWayDown) {
    for (const GstState lDown : {GST_STATE_READY, GST_STATE_NULL}) {
        ServeH264();
        ASSERT_TRUE(mElement.Play());
        mElement.Set(GST_STATE_PAUSED);
        EXPECT_TRUE(mElement.Seek(20 * GST_SECOND));
        mElement.Set(lDown);
        mServer.Push(0, 0, "x");
        ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll("rtsp://host/b"));
        mServer.TakeCalls();
        ASSERT_TRUE(Eventually([this] { return Texts{"Pause"} == mServer.TakeCalls(); }));
        mServer.Push(0, kSecond, "y");
        mElement.Set(GST_STATE_PLAYING);
        EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
        mElement.Set(GST_STATE_NULL);
        mServer.TakeCalls();
    }
}

TEST_F(PauseTimer, WithoutNetworkTheServerCountsAsPausedUnasked) {
    ServeH264();
    const DebugCapture lLog("virertsp_source");
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    mElement.SetNetwork(false);
    ASSERT_TRUE(Eventually(
        [&lLog] { return 1 == lLog.Count(GST_LEVEL_DEBUG, "Element still in PAUSED state -> Pause server"); }));
    mElement.SetNetwork(true);
    mServer.TakeCalls();
    mServer.Push(0, kSecond, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
}

TEST_F(PauseTimer, ARefusedPauseIsTold) {
    ServeH264();
    mServer.On("Pause", Throws<Player::RTSPErr>(0x455));
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    EXPECT_TRUE(mElement.AwaitMessage("error 1115221"));
    mServer.Push(0, kSecond, "x");
    mServer.TakeCalls();
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
}

class PauseTimerGone : public PauseTimer, public ::testing::WithParamInterface<GstState> {};

TEST_P(PauseTimerGone, AnElementThatWentDownIsLeftAlone) {
    ServeH264();
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    mElement.Set(GetParam());
    mServer.TakeCalls();
    // It is not the state alone that keeps the timer from acting.
    mElement.Force(GST_STATE_PAUSED);
    std::this_thread::sleep_for(kLongerThanTheTimer);
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    mElement.Force(GetParam());
}

INSTANTIATE_TEST_SUITE_P(States, PauseTimerGone, ::testing::Values(GST_STATE_READY, GST_STATE_NULL));

TEST_F(PauseTimer, ComesAgainAfterItWasTakenBack) {
    ServeH264();
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    mElement.Set(GST_STATE_READY);
    std::this_thread::sleep_for(std::chrono::milliseconds(800));
    mServer.Push(0, 0, "x");
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED));
    mServer.TakeCalls();
    // The first would have come now.
    std::this_thread::sleep_for(std::chrono::milliseconds(900));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    EXPECT_TRUE(Eventually([this] { return Texts{"Pause"} == mServer.TakeCalls(); }));
}

TEST_F(PauseTimer, ATimerThatFiredBeforeATransitionTookItBackDoesNothing) {
    ServeH264();
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    mServer.TakeCalls();
    // A new location has the turn over the moment at which the timer fires.
    mServer.Push(0, kSecond, "x");
    mServer.Block("Play");
    std::thread lChange([this] { mElement.SetText("location", "rtsp://host/b"); });
    ASSERT_TRUE(mServer.AwaitBlocked());
    std::this_thread::sleep_for(kLongerThanTheTimer);
    std::thread lPlay([this] { mElement.Set(GST_STATE_READY); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    mServer.Release();
    lChange.join();
    lPlay.join();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const Texts lCalls = mServer.TakeCalls();
    // Whoever of the two got the lock first.
    EXPECT_TRUE((Texts{"Play rtsp://host/b 0.000000"}) == lCalls ||
                (Texts{"Play rtsp://host/b 0.000000", "Pause"}) == lCalls);
    EXPECT_EQ(GST_STATE_READY, mElement.State());
}

TEST_F(PauseTimer, ElementsThatAreGoneWhenItFires) {
    ServeH264();
    for (int lRound = 0; lRound < 20; ++lRound) {
        ElementUnderTest lElement;
        mServer.Push(0, 0, "x");
        lElement.SetText("location", "rtsp://host/clip");
        ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, lElement.Set(GST_STATE_PAUSED));
        std::this_thread::sleep_for(std::chrono::milliseconds(10 * lRound));
    }
    std::this_thread::sleep_for(kLongerThanTheTimer);
}

}  // namespace ElementTest
