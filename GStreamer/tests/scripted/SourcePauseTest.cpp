#include <chrono>
#include <thread>

#include "support/DebugCapture.hpp"
#include "support/SourceTest.hpp"
#include "support/TimersRun.hpp"

namespace ElementTest {
namespace {

using std::chrono::milliseconds;

std::string Kinds(const SinkPad* aSink) {
    return nullptr == aSink ? "no pad" : aSink->Kinds();
}

/// Pausing and resuming a server whose presentation is recorded, or live.
class SourcePauseTest : public SourceTest {
protected:
    /// PLAYING, both access units of the start delivered, and nothing remembered of it.
    void StartPlaying(const std::string& aDialogue) {
        Start(aDialogue, GST_STATE_PLAYING);
        ASSERT_NE(nullptr, Element().Sink(0));
        ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
        Element().Sink(0)->Clear();
        Messages();
    }
};

class SourcePauseTestSlow : public SourcePauseTest {
protected:
    const TimersRun mTimers;
};

const char* const kPause = R"(
    > PAUSE clip 4 | Session: 5
    < 200 4
    NOTIFY paused
)";

TEST_F(SourcePauseTestSlow, PausesTheServerOfAnElementThatStaysPaused) {
    const DebugCapture lLog("virertsp_source");
    const auto lBegin = std::chrono::steady_clock::now();
    Start(std::string(kClip) + kPause + R"(
        > PLAY clip 5 | Session: 5
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=180000 | Range: npt=1-20
        VIDEO 10 1.0 1.5
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PAUSED);
    ASSERT_TRUE(mServers[0]->Await("paused"));
    const auto lWaited = std::chrono::steady_clock::now() - lBegin;
    EXPECT_GE(lWaited, milliseconds(1500));
    EXPECT_EQ(1500 * GST_MSECOND, mTimers.LastAfter());
    EXPECT_TRUE(Eventually(
        [&lLog] { return 1 == lLog.Count(GST_LEVEL_DEBUG, "Element still in PAUSED state -> Pause server"); }));
    To(GST_STATE_PLAYING);
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 4));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Resuming"));
}

TEST_F(SourcePauseTestSlow, DoesNotPauseTheServerOfAnElementThatPlays) {
    const DebugCapture lLog("virertsp_source");
    Start(std::string(kClip) + "PAUSE\nTEARDOWN", GST_STATE_PLAYING);
    std::this_thread::sleep_for(milliseconds(1800));
    EXPECT_EQ(0U, lLog.Count(GST_LEVEL_DEBUG, "Element still in PAUSED state -> Pause server"));
    To(GST_STATE_NULL);
    EXPECT_EQ(0U, lLog.Count(GST_LEVEL_DEBUG, "Resuming"));
}

TEST_F(SourcePauseTestSlow, DoesNotPauseTheServerOfAnElementThatWentDown) {
    Start(std::string(kClip) + "AWAIT waited\nTEARDOWN", GST_STATE_PAUSED);
    To(GST_STATE_READY);
    std::this_thread::sleep_for(milliseconds(1800));
    mServers[0]->Notify("waited");
    To(GST_STATE_NULL);
}

TEST_F(SourcePauseTestSlow, WithoutTheNetworkTheServerIsNotToldButCountsAsPaused) {
    const DebugCapture lLog("virertsp_source");
    Start(std::string(kClip) + "AWAIT played\nPAUSE\nTEARDOWN", GST_STATE_PAUSED);
    Element().SetNetwork(false);
    EXPECT_TRUE(Eventually(
        [&lLog] { return 1 == lLog.Count(GST_LEVEL_DEBUG, "Element still in PAUSED state -> Pause server"); }));
    EXPECT_EQ(GST_STATE_CHANGE_FAILURE, Element().Set(GST_STATE_PLAYING));
    Element().SetNetwork(true);
    To(GST_STATE_PLAYING);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Resuming"));
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
    mServers[0]->Notify("played");
}

TEST_F(SourcePauseTestSlow, ARefusedPauseIsToldAndTheNextPlayingResumes) {
    const DebugCapture lLog("virertsp_source");
    Start(std::string(kClip) + R"(
        > PAUSE clip 4
        < 454 4
        NOTIFY refused
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PAUSED);
    ASSERT_TRUE(mServers[0]->Await("refused"));
    ASSERT_TRUE(Element().AwaitMessage("error " + std::to_string(0x00110454)));
    // The server plays on: resuming asks nothing of it.
    To(GST_STATE_PLAYING);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Resuming"));
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
}

TEST_F(SourcePauseTest, PausesAndFlushesAndResumesWithoutARange) {
    StartPlaying(std::string(kClip) + kPause + R"(
        > PLAY clip 5 | Session: 5
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=180000 | Range: npt=1-20
        VIDEO 10 1.0 1.5
        PAUSE
        TEARDOWN
    )");
    To(GST_STATE_PAUSED);
    EXPECT_EQ("flush-start", Kinds(Element().Sink(0)));
    EXPECT_TRUE(mServers[0]->Await("paused"));
    To(GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ("flush-start flush-stop segment buffer buffer", Kinds(Element().Sink(0)));
    const std::vector<Item> lBuffers = Element().Sink(0)->Buffers();
    EXPECT_EQ(GST_SECOND / 2, lBuffers[0].mTimestamp) << "goes on from where it paused";
    EXPECT_TRUE(lBuffers[0].mDiscont);
    EXPECT_FALSE(lBuffers[1].mDiscont);
}

TEST_F(SourcePauseTest, SaysWhereItWillResume) {
    const DebugCapture lLog("virertsp_source");
    StartPlaying(std::string(kClip) + kPause + "TEARDOWN");
    testing::internal::CaptureStdout();
    To(GST_STATE_PAUSED);
    EXPECT_EQ("Pausing, will resume at 0.500000\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Pausing, will resume at 0.500000\n"));
}

TEST_F(SourcePauseTest, ResumesAtTheEarliestOfItsTracks) {
    Start(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video AAC range=0-20
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | UDP 0
        > SETUP clip/audio 3 | Session: 5 | UDP 1
        < 200 3 | UDP 1
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=90000,url=r/audio;seq=1;rtptime=44100 | Range: npt=0-20
        VIDEO 1 0.0 5.0
        AUDIO 1 0.0 2.0
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    ASSERT_TRUE(Element().Sink(1)->Await("buffer", 2));
    testing::internal::CaptureStdout();
    To(GST_STATE_PAUSED);
    EXPECT_EQ("Pausing, will resume at 2.000000\n", testing::internal::GetCapturedStdout());
}

TEST_F(SourcePauseTest, AfterTheNetworkWasLostItSeeksToTheResumePosition) {
    StartPlaying(std::string(kClip) + kPause + R"(
        > PLAY clip 5 | Session: 5 | Range: npt=0.500000-
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=135000 | Range: npt=0.5-20
        VIDEO 10 0.5 1.5
        > PAUSE clip 6 | Session: 5
        < 200 6
        // Once only.
        > PLAY clip 7 | Session: 5
        < 200 7 | RTP-Info: url=r/video;seq=20;rtptime=270000 | Range: npt=2-20
        VIDEO 20 2.0 2.5
        PAUSE
        TEARDOWN
    )");
    To(GST_STATE_PAUSED);
    Element().SetNetwork(false);
    EXPECT_EQ(GST_STATE_CHANGE_FAILURE, Element().Set(GST_STATE_PLAYING));
    Element().SetNetwork(true);
    To(GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ(GST_SECOND / 2, Element().Sink(0)->Buffers()[0].mTimestamp);
    To(GST_STATE_PAUSED);
    To(GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 4));
}

TEST_F(SourcePauseTest, ALiveStreamIsPlayedAnewInsteadOfResumed) {
    StartPlaying(std::string(kLive) + R"(
        > PAUSE live 4
        < 200 4
        > TEARDOWN live 5
        < 200 5
        > DESCRIBE live 6
        < 200 6 | SDP live/ video
        > SETUP live/video 7 | UDP 1
        < 200 7 | Session: 6 | UDP 1
        > PLAY live 8 | Session: 6 | Range: npt=0.000000-
        < 200 8 | RTP-Info: url=r/video;seq=1;rtptime=90000
        VIDEO1 1 0.0 0.5
        PAUSE
        TEARDOWN
    )");
    testing::internal::CaptureStdout();
    To(GST_STATE_PAUSED);
    EXPECT_EQ("", testing::internal::GetCapturedStdout()) << "no position to resume at";
    To(GST_STATE_PLAYING);
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ("flush-start flush-stop segment buffer buffer", Kinds(Element().Sink(0)));
}

TEST_F(SourcePauseTest, ALiveStreamIsPlayedAnewThoughTheNetworkWasLostAndASeekWasAskedFor) {
    StartPlaying(std::string(kLive) + R"(
        > PAUSE live 4
        < 200 4
        > TEARDOWN live 5
        < 200 5
        > DESCRIBE live 6
        < 200 6 | SDP live/ text
        C...
    )");
    To(GST_STATE_PAUSED);
    EXPECT_TRUE(Element().Seek(3 * GST_SECOND));
    Element().SetNetwork(false);
    Element().SetNetwork(true);
    Element().Set(GST_STATE_PLAYING);
    mElement.reset();
    mServers[0]->Failure();
    mServers.clear();
}

TEST_F(SourcePauseTest, ARefusedResumeLeavesNoPadFlushing) {
    StartPlaying(std::string(kClip) + kPause + R"(
        > PLAY clip 5 | Session: 5
        < 459 5
        VIDEO 3 1.0 1.5
        TEARDOWN
    )");
    To(GST_STATE_PAUSED);
    // The transition succeeds, and says what went wrong.
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_PLAYING));
    EXPECT_EQ(1U, Element().CountMessages("error " + std::to_string(0x00110459)));
    EXPECT_EQ("flush-start flush-stop", Kinds(Element().Sink(0)));
    To(GST_STATE_NULL);
}

TEST_F(SourcePauseTest, APauseThatIsRefusedAfterPlayingIsToldAndResumed) {
    const DebugCapture lLog("virertsp_source");
    StartPlaying(std::string(kClip) + R"(
        > PAUSE clip 4
        < 454 4
        VIDEO 3 1.0
        PAUSE
        TEARDOWN
    )");
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_PAUSED));
    EXPECT_EQ(1U, Element().CountMessages("error " + std::to_string(0x00110454)));
    To(GST_STATE_PLAYING);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Resuming"));
    EXPECT_TRUE(Element().Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-start flush-stop segment buffer", Kinds(Element().Sink(0)));
}

TEST_F(SourcePauseTest, ASeekWhilePlayingPausesAndPlaysFromThere) {
    StartPlaying(std::string(kClip) + R"(
        > PAUSE clip 4 | Session: 5
        < 200 4
        > PLAY clip 5 | Session: 5 | Range: npt=12.500000-
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=1215000 | Range: npt=12.5-20
        VIDEO 10 12.5 13.0
        PAUSE
        TEARDOWN
    )");
    EXPECT_TRUE(Element().Seek(12500 * GST_MSECOND));
    EXPECT_EQ(GST_STATE_PLAYING, Element().State());
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ("flush-start flush-stop segment buffer buffer", Kinds(Element().Sink(0)));
    EXPECT_EQ(12500 * GST_MSECOND, Element().Sink(0)->Buffers()[0].mTimestamp);
    EXPECT_EQ(0U, Element().CountMessages("duration")) << "the tracks stay";
}

TEST_F(SourcePauseTest, ASeekIsTakenInAnyFormat) {
    StartPlaying(std::string(kClip) + R"(
        > PAUSE clip 4
        < 200 4
        > PLAY clip 5 | Session: 5 | Range: npt=2.000000-
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=270000 | Range: npt=2-20
        VIDEO 10 2.0 2.5
        PAUSE
        TEARDOWN
    )");
    EXPECT_TRUE(gst_element_send_event(
        Get(), gst_event_new_seek(2.0, GST_FORMAT_BYTES, static_cast<GstSeekFlags>(0), GST_SEEK_TYPE_SET, 2000000000,
                                  GST_SEEK_TYPE_SET, 3000000000)));
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
}

TEST_F(SourcePauseTest, ASeekWhilePausedIsOnlyStoredAndHappensOnPlaying) {
    StartPlaying(std::string(kClip) + kPause + R"(
        AWAIT stored
        > PLAY clip 5 | Session: 5 | Range: npt=7.000000-
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=720000 | Range: npt=7-20
        VIDEO 10 7.0 7.5
        PAUSE
        TEARDOWN
    )");
    To(GST_STATE_PAUSED);
    EXPECT_TRUE(Element().Seek(3 * GST_SECOND));
    EXPECT_TRUE(Element().Seek(7 * GST_SECOND)) << "the last one counts";
    EXPECT_EQ("flush-start", Kinds(Element().Sink(0)));
    mServers[0]->Notify("stored");
    To(GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ(7 * GST_SECOND, Element().Sink(0)->Buffers()[0].mTimestamp);
}

TEST_F(SourcePauseTest, ASeekThatIsRefusedLeavesTheTasksRunning) {
    StartPlaying(std::string(kClip) + R"(
        > PAUSE clip 4
        < 459 4
        VIDEO 3 1.0 1.5
        PAUSE
        TEARDOWN
    )");
    EXPECT_TRUE(Element().Seek(GST_SECOND)) << "a seek event is handled, whatever comes of it";
    EXPECT_EQ(1U, Element().CountMessages("error " + std::to_string(0x00110459)));
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ("flush-start flush-stop segment buffer buffer", Kinds(Element().Sink(0)));
}

TEST_F(SourcePauseTest, ASeekBeforeThereIsAServerIsNotForgottenButHasNoEffect) {
    EXPECT_TRUE(Element().Seek(GST_SECOND));
    EXPECT_THAT(Messages({"error", "warning"}), IsEmpty());
}

TEST_F(SourcePauseTest, OtherEventsAreNotHandled) {
    testing::internal::CaptureStdout();
    EXPECT_FALSE(gst_element_send_event(Get(), gst_event_new_latency(1)));
    EXPECT_EQ("Got unhandled event at virertstpsrc!\n", testing::internal::GetCapturedStdout());
    GstEvent* const lEvent = gst_event_new_eos();
    gst_event_ref(lEvent);
    EXPECT_FALSE(gst_element_send_event(Get(), lEvent));
    EXPECT_EQ(1, GST_MINI_OBJECT_REFCOUNT_VALUE(lEvent)) << "each way out lets go of the event";
    gst_event_unref(lEvent);
}

}  // namespace
}  // namespace ElementTest
