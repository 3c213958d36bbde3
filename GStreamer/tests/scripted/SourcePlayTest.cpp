#include <chrono>
#include <thread>

#include "support/DebugCapture.hpp"
#include "support/Leg.hpp"
#include "support/SourceTest.hpp"

namespace ElementTest {
namespace {

using std::chrono::milliseconds;

/// What comes out of the pads while the element plays, and what it posts of the data's coming and going.
class SourcePlayTest : public SourceTest {
protected:
    /// "buffering 0", "buffering 100" up to now.
    std::vector<std::string> Buffering() { return Messages({"buffering"}); }
};

TEST_F(SourcePlayTest, VideoBuffersCount) {
    Start(std::string(kClip) + "AWAIT more\nVIDEO 3 1.0\nPAUSE\nTEARDOWN", GST_STATE_PLAYING);
    const SinkPad& lSink = *Element().Sink(0);
    ASSERT_TRUE(lSink.Await("buffer", 2));
    mServers[0]->Notify("more");
    ASSERT_TRUE(lSink.Await("buffer", 3));
    EXPECT_EQ(LegPreamble() + "segment buffer buffer buffer", lSink.Kinds());
    const std::vector<Item> lBuffers = lSink.Buffers();
    for (std::size_t lIndex = 0; lIndex < lBuffers.size(); ++lIndex) {
        EXPECT_EQ(lIndex * GST_SECOND / 2, lBuffers[lIndex].mTimestamp);
        EXPECT_EQ(GST_CLOCK_TIME_NONE, lBuffers[lIndex].mDuration);
        EXPECT_EQ(lIndex, lBuffers[lIndex].mOffset);
        EXPECT_EQ(lIndex, lBuffers[lIndex].mOffsetEnd);
        EXPECT_EQ(0 == lIndex, lBuffers[lIndex].mDiscont);
        EXPECT_EQ(std::string("\x65") + static_cast<char>(lIndex + 1),
                  lBuffers[lIndex].mBytes.substr(lBuffers[lIndex].mBytes.size() - 2));
    }
}

TEST_F(SourcePlayTest, AudioBuffersCarryTheTrackBytesAndTimes) {
    Start(std::string(kTwoTracks) + "PAUSE\nTEARDOWN", GST_STATE_PLAYING);
    const SinkPad& lSink = *Element().Sink(1);
    ASSERT_TRUE(lSink.Await("buffer", 2));
    const std::vector<Item> lBuffers = lSink.Buffers();
    EXPECT_EQ("\xaa\x01", lBuffers[0].mBytes);
    EXPECT_EQ("\xaa\x02", lBuffers[1].mBytes);
    EXPECT_EQ(0U, lBuffers[0].mTimestamp);
    EXPECT_EQ(GST_SECOND / 2, lBuffers[1].mTimestamp);
    EXPECT_TRUE(lBuffers[0].mDiscont);
    EXPECT_FALSE(lBuffers[1].mDiscont);
    EXPECT_EQ(0U, lBuffers[1].mOffset) << "audio is not counted";
}

const char* const kVisual = R"(
    > DESCRIBE clip 1
    < 200 1 | SDP clip/ video:96:90000:MP4V-ES range=0-20
    > SETUP clip/video 2 | UDP 0
    < 200 2 | Session: 5 | UDP 0
    > PLAY clip 3
    < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-20
    VISUAL 1 1.0 1.5
    PAUSE
    TEARDOWN
)";

TEST_F(SourcePlayTest, VisualBuffersCountAndTheirSegmentStandsWhereThePipelineIs) {
    GstClock* const lClock = gst_system_clock_obtain();
    gst_element_set_clock(Get(), lClock);
    const GstClockTime lBase = gst_clock_get_time(lClock) - 50 * GST_SECOND;
    gst_element_set_base_time(Get(), lBase);
    Start(kVisual, GST_STATE_PLAYING);
    const SinkPad& lSink = *Element().Sink(0);
    ASSERT_TRUE(lSink.Await("buffer", 2));
    ASSERT_EQ(LegPreamble() + "segment buffer buffer", lSink.Kinds());
    const auto lNow = static_cast<gint64>(gst_clock_get_time(lClock) - lBase);
    gst_object_unref(lClock);

    const std::vector<Item> lItems = lSink.Items();
    const Segment& lSegment = lItems[lItems.size() - 3].mSegment;
    EXPECT_EQ(static_cast<gint64>(GST_SECOND), lSegment.mStart);
    EXPECT_EQ(-1, lSegment.mStop);
    EXPECT_GE(lSegment.mPosition, 50 * static_cast<gint64>(GST_SECOND));
    EXPECT_LE(lSegment.mPosition, lNow);
    const std::vector<Item> lBuffers = lSink.Buffers();
    for (std::size_t lIndex = 0; lIndex < lBuffers.size(); ++lIndex) {
        EXPECT_EQ(GST_SECOND + lIndex * GST_SECOND / 2, lBuffers[lIndex].mTimestamp);
        EXPECT_EQ(lIndex, lBuffers[lIndex].mOffset);
        EXPECT_EQ(lIndex, lBuffers[lIndex].mOffsetEnd);
        EXPECT_EQ(0 == lIndex, lBuffers[lIndex].mDiscont);
        EXPECT_EQ(std::string("\0\0\x01\xb6", 4) + static_cast<char>(lIndex + 1), lBuffers[lIndex].mBytes);
    }
}

TEST_F(SourcePlayTest, MediaWithinTheConnectionComesOutOfBothPads) {
    Interleave();
    mElement = std::make_unique<ElementUnderTest>();
    Start(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video AAC range=0-20
        > SETUP clip/video 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3 | Session: 5 | TCP 1
        < 200 3 | TCP 1
        > PLAY clip 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=90000,url=r/audio;seq=1;rtptime=44100 | Range: npt=0-20
        SPLIT
        VIDEO$ 1 0.0 0.5
        AUDIO$ 1 0.0
        AWAIT both
        // Frames go on coming between a request and its answer: here of no track.
        > PAUSE clip 5 | Session: 5
        S$ 9 80 60 00 00
        < 200 5
        > PLAY clip 6 | Session: 5
        S$ 9 80 60 00 00
        < 200 6 | RTP-Info: url=r/video;seq=10;rtptime=225000,url=r/audio;seq=10;rtptime=110250 | Range: npt=1.5-20
        SPLIT
        VIDEO$ 10 1.5 2.0
        AUDIO$ 10 1.5
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    ASSERT_TRUE(Element().Sink(1)->Await("buffer", 1));
    EXPECT_EQ(GST_SECOND / 2, Element().Sink(0)->Buffers()[1].mTimestamp);
    EXPECT_EQ("\xaa\x01", Element().Sink(1)->Buffers()[0].mBytes);
    mServers[0]->Notify("both");
    To(GST_STATE_PAUSED);
    Element().Sink(0)->Clear();
    Element().Sink(1)->Clear();
    To(GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    ASSERT_TRUE(Element().Sink(1)->Await("buffer"));
    EXPECT_EQ("flush-stop segment buffer buffer", Element().Sink(0)->Kinds());
    EXPECT_EQ("\xaa\x0a", Element().Sink(1)->Buffers()[0].mBytes);
    To(GST_STATE_NULL);
    EXPECT_THAT(Messages({"error", "warning"}), IsEmpty());
}

TEST_F(SourcePlayTest, EveryPadHasItsOwnSegment) {
    Start(std::string(kTwoTracks) + "PAUSE\nTEARDOWN", GST_STATE_PLAYING);
    for (unsigned lTrack : {0U, 1U}) {
        const SinkPad& lSink = *Element().Sink(lTrack);
        ASSERT_TRUE(lSink.Await("buffer", 2));
        EXPECT_EQ(LegPreamble() + "segment buffer buffer", lSink.Kinds());
        for (const Item& lItem : lSink.Items()) {
            if ("segment" != lItem.mKind) { continue; }
            EXPECT_FALSE(lItem.mSegment.mUpdate);
            EXPECT_EQ(1.0, lItem.mSegment.mRate);
            EXPECT_EQ(GST_FORMAT_TIME, lItem.mSegment.mFormat);
            EXPECT_EQ(0, lItem.mSegment.mStart);
            EXPECT_EQ(0, lItem.mSegment.mPosition);
        }
    }
}

TEST_F(SourcePlayTest, AByeEndsTheStreamOnce) {
    Start(std::string(kClip) + "AWAIT played\nBYE 0\nAWAIT ended\nVIDEO 3 1.0\nPAUSE\nTEARDOWN", GST_STATE_PLAYING);
    const SinkPad& lSink = *Element().Sink(0);
    ASSERT_TRUE(lSink.Await("buffer", 2));
    EXPECT_EQ(0U, lSink.Count("eos"));
    mServers[0]->Notify("played");
    ASSERT_TRUE(lSink.Await("eos"));
    mServers[0]->Notify("ended");
    std::this_thread::sleep_for(milliseconds(400));
    EXPECT_EQ(1U, lSink.Count("eos"));
    EXPECT_EQ(2U, lSink.Count("buffer")) << "the task idles";
    EXPECT_THAT(Messages({"error", "warning", "buffering"}), IsEmpty());
}

TEST_F(SourcePlayTest, AnAccessUnitThatIsLeftOpenGoesOutBeforeTheEnd) {
    Start(std::string(kClip) + "AWAIT played\nOPEN 3 1.0\nBYE 0\nPAUSE\nTEARDOWN", GST_STATE_PLAYING);
    const SinkPad& lSink = *Element().Sink(0);
    ASSERT_TRUE(lSink.Await("buffer", 2));
    mServers[0]->Notify("played");
    ASSERT_TRUE(lSink.Await("eos"));
    EXPECT_EQ(LegPreamble() + "segment buffer buffer buffer eos", lSink.Kinds());
}

TEST_F(SourcePlayTest, TheEndTimeEndsTheStreamOnce) {
    Start(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video range=0-1
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | UDP 0
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-1
        VIDEO 1 0.0 0.5 1.0
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PLAYING);
    const SinkPad& lSink = *Element().Sink(0);
    ASSERT_TRUE(lSink.Await("eos"));
    std::this_thread::sleep_for(milliseconds(400));
    EXPECT_EQ(LegPreamble() + "segment buffer buffer buffer eos", lSink.Kinds());
}

TEST_F(SourcePlayTest, OneTrackEndsWhileTheOtherPlays) {
    Start(std::string(kTwoTracks) + "BYE 0\nAWAIT ended\nAUDIO 3 1.0\nPAUSE\nTEARDOWN", GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("eos"));
    mServers[0]->Notify("ended");
    ASSERT_TRUE(Element().Sink(1)->Await("buffer", 3));
    EXPECT_EQ(0U, Element().Sink(1)->Count("eos"));
}

TEST_F(SourcePlayTest, SaysThatThereIsNoDataAndThatThereIsAgain) {
    const DebugCapture lLog("virertsp_source");
    Start(std::string(kClip) + "AWAIT none\nVIDEO 3 1.0\nPAUSE\nTEARDOWN", GST_STATE_PLAYING);
    ASSERT_TRUE(Element().AwaitMessage("buffering 0"));
    std::this_thread::sleep_for(milliseconds(700));
    EXPECT_THAT(Buffering(), ElementsAre("buffering 0")) << "it is said once";
    mServers[0]->Notify("none");
    ASSERT_TRUE(Element().AwaitMessage("buffering 100"));
    EXPECT_THAT(Buffering(), ElementsAre("buffering 100"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "kOk -> kNoData on track 0"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "kNoData -> kOk on track 0"));
}

TEST_F(SourcePlayTest, SaysThatThereIsNoDataOnlyWhenNoTrackHasAny) {
    Start(std::string(kTwoTracks) + "AWAIT over\nPAUSE\nTEARDOWN", GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    ScriptedServer& lServer = *mServers[0];
    // Audio alone goes on for longer than video needs to report.
    for (unsigned lPacket = 0; lPacket < 9; ++lPacket) {
        std::this_thread::sleep_for(milliseconds(100));
        const auto lSeq = static_cast<std::uint8_t>(3 + lPacket);
        lServer.Media(1).SendRtp({0x80, 0xe1, 0, lSeq, 0, 2, 0, lSeq, 0, 0, 0, 7, 1, 0xcc});
    }
    EXPECT_THAT(Buffering(), IsEmpty());
    EXPECT_TRUE(Element().AwaitMessage("buffering 0"));
    lServer.Notify("over");
}

TEST_F(SourcePlayTest, UnansweredBufferingIsAnsweredWhenTheTasksRunAgain) {
    Start(std::string(kClip) + R"(
        > PAUSE clip 4
        < 200 4
        > PLAY clip 5
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=180000 | Range: npt=1-20
        VIDEO 10 1.0 1.5
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PLAYING);
    ASSERT_TRUE(Element().AwaitMessage("buffering 0"));
    To(GST_STATE_PAUSED);
    EXPECT_THAT(Buffering(), ElementsAre("buffering 0"));
    To(GST_STATE_PLAYING);
    EXPECT_THAT(Buffering(), ElementsAre("buffering 100"));
}

TEST_F(SourcePlayTest, QosAndOtherEventsGoNoFurtherThanThePad) {
    Start(std::string(kClip) + "PAUSE\nTEARDOWN", GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    const DebugCapture lLog("virertsp_stream");
    EXPECT_TRUE(Element().Sink(0)->SendUp(NewQosEvent()));
    Element().Sink(0)->SendUp(
        gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET, 5, GST_SEEK_TYPE_NONE, -1));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_WARNING, "Unhandled event (src0 got seek)\n"));
    EXPECT_EQ(0U, Element().Sink(0)->Count("flush-start"));
}

TEST_F(SourcePlayTest, GoesThroughNullAndPlaysAgain) {
    Start(std::string(kClip) + "PAUSE\nTEARDOWN\nEND\nACCEPT\n" + R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video range=0-20
        > SETUP clip/video 2 | UDP 1
        < 200 2 | Session: 5 | UDP 1
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-20
        VIDEO1 1 0.0 0.5
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    To(GST_STATE_NULL);
    EXPECT_EQ(nullptr, Element().Sink(0));
    To(GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ(LegPreamble() + "segment buffer buffer", Element().Sink(0)->Kinds());
}

TEST_F(SourcePlayTest, GoesThroughReadyAndPlaysAgainOnTheSameSession) {
    Start(std::string(kClip) + R"(
        PAUSE
        > TEARDOWN clip 5
        < 200 5
        > DESCRIBE clip 6
        < 200 6 | SDP clip/ video range=0-20
        > SETUP clip/video 7 | UDP 1
        < 200 7 | Session: 6 | UDP 1
        > PLAY clip 8
        < 200 8 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-20
        VIDEO1 1 0.0 0.5
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    To(GST_STATE_READY);
    To(GST_STATE_PLAYING);
    ASSERT_NE(nullptr, Element().Sink(0));
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", kPadsSurviveReady ? 4 : 2));
    const std::vector<Item> lBuffers = Element().Sink(0)->Buffers();
    EXPECT_EQ(0U, lBuffers[lBuffers.size() - 2].mTimestamp);
    EXPECT_TRUE(lBuffers[lBuffers.size() - 2].mDiscont);
}

}  // namespace
}  // namespace ElementTest
