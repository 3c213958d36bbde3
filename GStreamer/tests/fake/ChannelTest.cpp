#include <chrono>
#include <thread>

#include "support/DebugCapture.hpp"
#include "support/SourceFixture.hpp"
#include "support/TimersRun.hpp"

namespace ElementTest {

namespace {

constexpr gint64 kSecond = 1000000000;

/// Seeks and new locations.
class Channel : public SourceFixture {
protected:
    /// PAUSED after PLAYING.
    void Pause() {
        ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PAUSED));
        EXPECT_EQ(Texts{"Pause"}, mServer.TakeCalls());
    }
};

}  // namespace

TEST_F(Channel, ALocationSetInReadyIsKeptForLater) {
    ServeH264();
    mElement.Set(GST_STATE_READY);
    mElement.SetText("location", "rtsp://host/a");
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    EXPECT_EQ(Texts(), mElement.TakeMessages());
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_EQ(Texts{"Play rtsp://host/b 0.000000"}, mServer.TakeCalls());
}

TEST_F(Channel, ALocationSetWhilePlayingIsPlayedAtOnce) {
    ServeH264();
    StartPlaying();
    PushOn("Play", 5 * kSecond, "of b");
    mElement.SetText("location", "vire://host/b");
    EXPECT_EQ(Texts{"Play rtsp://host/b 0.000000"}, mServer.TakeCalls());
    EXPECT_EQ(GST_STATE_PLAYING, mElement.State());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-start flush-stop segment buffer", mElement.Sink(0)->Kinds());
    EXPECT_EQ("of b", mElement.Sink(0)->Buffers()[0].mBytes);
    EXPECT_EQ((Texts{"src0", "no-more-pads"}), mElement.PadSignals());
}

TEST_F(Channel, AnotherCodecGetsAnotherPad) {
    Serve({FakeServer::H264(), FakeServer::AAC()});
    ASSERT_TRUE(mElement.Play());
    mServer.Describe({FakeServer::MP4V(), FakeServer::AAC()});
    mServer.On("Play", [this] {
        mServer.Push(0, kSecond, "x");
        mServer.Push(1, kSecond, "y");
    });
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ((Texts{"src0", "src1", "no-more-pads", "-src0", "src0", "no-more-pads"}), mElement.PadSignals());
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_TRUE(mElement.Sink(1)->Await("buffer"));
    EXPECT_EQ(1U, mElement.Sink(1)->Count("flush-stop"));
}

TEST_F(Channel, TheSameCodecInAnotherConfigurationGetsAnotherPad) {
    Serve({FakeServer::H264(), FakeServer::AAC()});
    ASSERT_TRUE(mElement.Play());
    FakeServer::Description lOther = FakeServer::AAC();
    for (auto& lPair : lOther) {
        if ("TimeRes" == lPair.first) { lPair.second = "48000"; }
    }
    mServer.Describe({FakeServer::H264(), lOther});
    PushOn("Play", 0, "x");
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ((Texts{"src0", "src1", "no-more-pads", "-src1", "src1", "no-more-pads"}), mElement.PadSignals());
}

TEST_F(Channel, TracksThatTheNewChannelLacksGoAndThoseItHasInAdditionCome) {
    Serve({FakeServer::H264(), FakeServer::AAC()});
    ASSERT_TRUE(mElement.Play());
    PushOn("Play", 0, "x");
    mServer.Describe({FakeServer::H264()});
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ((Texts{"src0", "src1", "no-more-pads", "-src1"}), mElement.PadSignals());
    mServer.Describe({FakeServer::H264(), FakeServer::AAC(), FakeServer::MP4V()});
    mElement.SetText("location", "rtsp://host/c");
    EXPECT_EQ((Texts{"src0", "src1", "no-more-pads", "-src1", "src1", "src2", "no-more-pads"}), mElement.PadSignals());
}

TEST_F(Channel, WithTheServerPausedANewLocationPlaysAndIsPausedAgain) {
    ServeH264();
    StartPlaying();
    Pause();
    mElement.Sink(0)->Clear();
    mServer.Push(0, kSecond, "of b");
    const TimersRun lTimers;
    mElement.SetText("location", "rtsp://host/b");
    Texts lCalls;
    ASSERT_TRUE(Eventually([this, &lCalls] {
        for (const std::string& lCall : mServer.TakeCalls()) {
            lCalls.push_back(lCall);
        }
        return (Texts{"Play rtsp://host/b 0.000000", "Pause"}) == lCalls;
    }));
    EXPECT_EQ("", mElement.Sink(0)->Kinds());
    mServer.Push(0, 2 * kSecond, "of b");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-stop segment buffer", mElement.Sink(0)->Kinds().substr(0, 25));
    // All is as before: the next channel flushes.
    EXPECT_EQ(0U, mElement.Sink(0)->Count("flush-start"));
    PushOn("Play", 3 * kSecond, "of c");
    mElement.SetText("location", "rtsp://host/c");
    EXPECT_EQ(1U, mElement.Sink(0)->Count("flush-start"));
    EXPECT_EQ(2U, mElement.Sink(0)->Count("flush-stop"));
}

TEST_F(Channel, WithTheServerPausedANewLocationPlaysAndGoesOn) {
    ServeH264();
    StartPlaying();
    Pause();
    mElement.Sink(0)->Clear();
    mServer.Push(0, kSecond, "of b");
    mElement.SetText("location", "rtsp://host/b");
    mServer.TakeCalls();
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-stop segment buffer", mElement.Sink(0)->Kinds());
    // All is as before: pausing and playing resumes.
    Pause();
    mServer.Push(0, kSecond, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
}

TEST_F(Channel, WithoutNetworkTheChannelStays) {
    ServeH264();
    StartPlaying();
    mElement.SetNetwork(false);
    const DebugCapture lLog("virertsp_source");
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_WARNING, "Not allowed to change channels when network is not available"));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    EXPECT_EQ("rtsp://host/b", mElement.Text("location"));
    EXPECT_EQ("", mElement.Sink(0)->Kinds());
}

TEST_F(Channel, AClearedLocationLeavesTheChannelAlone) {
    ServeH264();
    StartPlaying();
    for (const char* lLocation : {static_cast<const char*>(nullptr), "", "no scheme"}) {
        mElement.SetText("location", lLocation);
        EXPECT_EQ("(null)", mElement.Text("location"));
    }
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    mServer.Push(0, kSecond, "x");
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(Channel, AfterAFailedChangeTheTasksRunAgain) {
    ServeH264();
    StartPlaying();
    mServer.On("Play", Throws<Player::SDPErr>(2, "no description"));
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ((Texts{"error 1179650",
                     "warning Changing the channel to rtsp://host/b failed: the server's description "
                     "of the presentation cannot be used."}),
              mElement.TakeMessages());
    EXPECT_EQ(GST_STATE_PLAYING, mElement.State());
    EXPECT_EQ(1U, mElement.Sink(0)->Count("flush-stop"));
    mServer.Push(0, kSecond, "x");
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(Channel, AFailedChangeWithTheServerPausedEndsWithThePause) {
    ServeH264();
    StartPlaying();
    Pause();
    mServer.On("Play", Throws<Player::SDPErr>(2, "no description"));
    mElement.SetText("location", "rtsp://host/b");
    mElement.Sink(0)->Clear();
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(1U, mElement.Sink(0)->Count("flush-stop"));
    mServer.Push(0, kSecond, "x");
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(Channel, AChannelWithoutPlayableTracksIsToldOnce) {
    ServeH264();
    StartPlaying();
    Serve({{{"Format", "AMR"}}});
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ(1U, mElement.TakeMessages().size());
    EXPECT_EQ(nullptr, mElement.Get()->srcpads);
    // The next one plays.
    ServeH264();
    mElement.SetText("location", "rtsp://host/c");
    ASSERT_NE(nullptr, mElement.Sink(0));
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(Channel, ASeekWhilePlayingSeeks) {
    ServeH264();
    StartPlaying();
    PushOn("Seek", 30 * kSecond, "there");
    EXPECT_TRUE(mElement.Seek(30 * GST_SECOND));
    EXPECT_EQ(Texts{"Seek 30.000000"}, mServer.TakeCalls());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-start flush-stop segment buffer", mElement.Sink(0)->Kinds());
    EXPECT_EQ((Texts{"src0", "no-more-pads"}), mElement.PadSignals());
    // It was that once: the next pause is resumed.
    Pause();
    mServer.Push(0, 31 * kSecond, "on");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
}

TEST_F(Channel, ASeekWhileTheServerIsPausedWaitsForPlaying) {
    ServeH264();
    StartPlaying();
    Pause();
    EXPECT_TRUE(mElement.Seek(20 * GST_SECOND));
    EXPECT_TRUE(mElement.Seek(30 * GST_SECOND));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    mServer.Push(0, 30 * kSecond, "there");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Seek 30.000000"}, mServer.TakeCalls());
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
    Pause();
    mServer.Push(0, 31 * kSecond, "on");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
}

TEST_F(Channel, ASeekThatLeavesTheStartAloneResumes) {
    ServeH264();
    StartPlaying();
    Pause();
    GstEvent* const lSeek =
        gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_NONE, GST_SEEK_TYPE_NONE, -1, GST_SEEK_TYPE_SET, 5);
    EXPECT_TRUE(gst_element_send_event(mElement.Get(), lSeek));
    mServer.Push(0, kSecond, "on");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
}

TEST_F(Channel, ALivePresentationIsPlayedAgainWhateverWasSought) {
    ServeH264(0);
    StartPlaying();
    Pause();
    EXPECT_TRUE(mElement.Seek(20 * GST_SECOND));
    mServer.Push(0, kSecond, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Play rtsp://host/clip 0.000000"}, mServer.TakeCalls());
}

TEST_F(Channel, ANewLocationForgetsTheSeek) {
    ServeH264();
    StartPlaying();
    Pause();
    EXPECT_TRUE(mElement.Seek(20 * GST_SECOND));
    mServer.Push(0, kSecond, "x");
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ(Texts{"Play rtsp://host/b 0.000000"}, mServer.TakeCalls());
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts(), mServer.TakeCalls());
}

TEST_F(Channel, AFailedSeekIsToldAndPlaysOn) {
    ServeH264();
    StartPlaying();
    mServer.On("Seek", [this] {
        mServer.Push(0, kSecond, "x");
        throw Player::RTSPErr(0x457, "%s", "Seeking PLAY failed");
    });
    EXPECT_TRUE(mElement.Seek(90 * GST_SECOND));
    EXPECT_EQ((Texts{"error 1115223", "warning Seeking in rtsp://host/clip failed: the server answered 457."}),
              mElement.TakeMessages());
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(Channel, ASeekBeforeAnythingPlaysDoesNothing) {
    ServeH264();
    mElement.Set(GST_STATE_READY);
    EXPECT_TRUE(mElement.Seek(20 * GST_SECOND));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    EXPECT_EQ(Texts(), mElement.TakeMessages());
    StartPlaying();
    PushOn("Play", kSecond, "x");
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ(Texts{"Play rtsp://host/b 0.000000"}, mServer.TakeCalls());
}

TEST_F(Channel, ASeekBeforeAnythingPlaysIsForgottenByANewLocation) {
    ServeH264();
    mElement.Set(GST_STATE_READY);
    EXPECT_TRUE(mElement.Seek(20 * GST_SECOND));
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    mServer.TakeCalls();
    for (const char* lOperation : {"Play", "Seek"}) {
        PushOn(lOperation, kSecond, "x");
    }
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ(Texts{"Play rtsp://host/b 0.000000"}, mServer.TakeCalls());
}

TEST_F(Channel, TheStartOfASeekCountsInAnyFormat) {
    ServeH264();
    StartPlaying();
    PushOn("Seek", kSecond, "x");
    EXPECT_TRUE(gst_element_send_event(
        mElement.Get(), gst_event_new_seek(1.0, GST_FORMAT_BYTES, GST_SEEK_FLAG_NONE, GST_SEEK_TYPE_SET, 1500000000,
                                           GST_SEEK_TYPE_NONE, -1)));
    EXPECT_EQ(Texts{"Seek 1.500000"}, mServer.TakeCalls());
}

TEST_F(Channel, OtherEventsAreNotHandled) {
    static std::string sPrinted;
    ServeH264();
    StartPlaying();
    const GPrintFunc lUsual = g_set_print_handler([](const gchar* aText) { sPrinted += aText; });
    for (GstEvent* const lEvent : {gst_event_new_eos(), gst_event_new_flush_start(), NewQosEvent()}) {
        gst_event_ref(lEvent);
        EXPECT_FALSE(gst_element_send_event(mElement.Get(), lEvent));
        EXPECT_EQ(1, GST_MINI_OBJECT_REFCOUNT_VALUE(lEvent));
        gst_event_unref(lEvent);
    }
    GstEvent* const lSeek =
        gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_NONE, GST_SEEK_TYPE_SET, 5, GST_SEEK_TYPE_NONE, -1);
    gst_event_ref(lSeek);
    PushOn("Seek", kSecond, "x");
    EXPECT_TRUE(gst_element_send_event(mElement.Get(), lSeek));
    EXPECT_EQ(1, GST_MINI_OBJECT_REFCOUNT_VALUE(lSeek));
    gst_event_unref(lSeek);
    g_set_print_handler(lUsual);
    EXPECT_EQ(
        "Got unhandled event at virertstpsrc!\nGot unhandled event at virertstpsrc!\n"
        "Got unhandled event at virertstpsrc!\n",
        sPrinted);
}

}  // namespace ElementTest
