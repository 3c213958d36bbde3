#include <atomic>

#include "fake/ModernFixture.hpp"
#include "support/TimersRun.hpp"

namespace ElementTest {
namespace {

class ModernPauses : public ModernFixture {};
class ModernPausesSlow : public ModernFixture {
protected:
    const TimersRun mTimers;
};

TEST_F(ModernPauses, APauseHasNothingToPrerollWith) {
    ServeH264();
    StartPlaying();
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED));
    Resume(0);
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "classic");
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED)) << "as it was started";
    mElement.Set(GST_STATE_READY);
    mServer.Push(0, 0, "x");
    ASSERT_TRUE(mElement.Play());
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PAUSED));
}

TEST_F(ModernPauses, APauseLeavesWhatIsDownstreamWhereItIs) {
    ServeH264();
    StartPlaying();
    for (gint64 lTime = 1; lTime < 4; ++lTime) {
        mElement.Set(GST_STATE_PAUSED);
        EXPECT_EQ(Texts{"Pause"}, mServer.TakeCalls());
        EXPECT_EQ("", mElement.Sink(0)->Kinds());
        Resume(lTime);
        EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
        EXPECT_EQ("buffer", TakeKinds(1));
    }
}

TEST_F(ModernPauses, AServerThatGoesOnFarAwayBeginsASegment) {
    ServeH264();
    StartPlaying();
    for (const gint64 lTime : {gint64{1001} * GST_MSECOND, gint64{0}, gint64{1000} * GST_MSECOND}) {
        mElement.Set(GST_STATE_PAUSED);
        Resume(lTime);
        EXPECT_EQ(gint64{1000} * GST_MSECOND == lTime ? "buffer" : "segment buffer", TakeKinds(1)) << lTime;
    }
}

TEST_F(ModernPauses, ALivePresentationBeginsAnew) {
    ServeH264(0);
    StartPlaying();
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_EQ("", mElement.Sink(0)->Kinds());
    PushOn("Play", 1, "anew");
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-start flush-stop segment buffer", TakeKinds(1));
}

TEST_F(ModernPausesSlow, AServerThatWasPausedBeforeTheFirstPlayingBeginsASegment) {
    ServeH264();
    std::atomic<bool> lPaused{false};
    mServer.On("Pause", [&lPaused] { lPaused = true; });
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    ASSERT_TRUE(Eventually([&lPaused] { return lPaused.load(); })) << "after 1.5 s";
    mServer.Clear("Pause");
    Resume(0);
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer", 2)) << "that of the start, too";
    EXPECT_EQ(LegPreamble() + "segment buffer buffer", TakeKinds(1));
}

/// Only the element goes down: what it is linked to stays as it is, and may hold a buffer for ever.
TEST_F(ModernPauses, GoesDownWhileAPushHangs) {
    ServeH264();
    StartPlaying();
    mElement.Sink(0)->SetBlocked(true);
    mServer.Push(0, 1, "hangs");
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_READY));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_NULL));
}

TEST_F(ModernPauses, ASegmentBeginsAfterReady) {
    ServeH264();
    StartPlaying();
    mElement.Set(GST_STATE_READY);
    mServer.Push(0, 1, "x");
    ASSERT_TRUE(mElement.Play());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    const std::string lKinds = mElement.Sink(0)->Kinds();
    EXPECT_EQ("segment buffer", lKinds.substr(lKinds.find("segment"))) << lKinds;
}

TEST_F(ModernPauses, ANewLocationDuringAPausePlays) {
    ServeH264();
    StartPlaying();
    mElement.Set(GST_STATE_PAUSED);
    mServer.Describe({FakeServer::MP4V()});
    PushOn("Play", 0, "other");
    mElement.SetText("location", "rtsp://host/other");
    EXPECT_EQ((Texts{"Pause", "Play rtsp://host/other 0.000000"}), mServer.TakeCalls());
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(ModernPauses, StandardOutputIsTheApplications) {
    ServeH264();
    StartPlaying();
    testing::internal::CaptureStdout();
    mElement.Set(GST_STATE_PAUSED);
    gst_element_send_event(mElement.Get(), gst_event_new_latency(1));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

}  // namespace
}  // namespace ElementTest
