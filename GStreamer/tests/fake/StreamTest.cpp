#include <thread>

#include "fake/StreamFixture.hpp"
#include "support/DebugCapture.hpp"

namespace ElementTest {
namespace {

class StreamAlone : public StreamFixture {};

TEST_F(StreamAlone, AddsAPadNamedForItsTrack) {
    MakeH264();
    EXPECT_EQ(std::vector<std::string>{"src1"}, mElement.PadSignals());
    EXPECT_STREQ("src1", GST_PAD_NAME(Pad()));
    EXPECT_EQ(GST_PAD_SRC, gst_pad_get_direction(Pad()));
    EXPECT_TRUE(gst_pad_is_linked(Pad()));
    Stream::destroy(mStream);
    mStream = nullptr;
    EXPECT_EQ(nullptr, mElement.Get()->srcpads);
}

TEST_F(StreamAlone, DoesNothingWhileTheElementIsPaused) {
    MakeH264();
    mElement.Force(GST_STATE_PAUSED);
    mServer.Push(1, 1, "x");
    mStream->task_run();
    std::this_thread::sleep_for(kALittle);
    EXPECT_EQ(1U, mServer.Queued(1));
    EXPECT_FALSE(mStream->task_is_running());
    mElement.Force(GST_STATE_PLAYING);
    EXPECT_TRUE(mStream->task_is_running());
    EXPECT_TRUE(Sink().Await("buffer"));
}

TEST_F(StreamAlone, DoesNothingBeforeItIsRunNorAfterItIsPausedOrStopped) {
    MakeH264();
    mServer.Push(1, 1, "x");
    std::this_thread::sleep_for(kALittle);
    EXPECT_EQ(1U, mServer.Queued(1));
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer"));
    for (const bool lStop : {false, true}) {
        lStop ? mStream->task_stop() : mStream->task_pause();
        lStop ? mStream->task_join() : mStream->task_wait();
        mServer.Push(1, 2, "x");
        std::this_thread::sleep_for(kALittle);
        EXPECT_EQ(1U, mServer.Queued(1));
        mStream->task_run();
        ASSERT_TRUE(Eventually([this] { return 0 == mServer.Queued(1); }));
    }
}

TEST_F(StreamAlone, APushErrorStopsItUntilItIsRunAgain) {
    MakeH264();
    Sink().SetResult(GST_FLOW_ERROR);
    mServer.Push(1, 1, "a");
    mServer.Push(1, 2, "b");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer"));
    std::this_thread::sleep_for(kALittle);
    EXPECT_EQ(1U, Sink().Count("buffer"));
    Sink().SetResult(GST_FLOW_OK);
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer", 2));
    EXPECT_EQ(LegPreamble() + "segment buffer segment buffer", Sink().Kinds());
}

TEST_F(StreamAlone, OtherPushResultsDoNotMatter) {
    MakeH264();
    std::size_t lBuffers = 0;
    mStream->task_run();
    for (const GstFlowReturn lResult :
         {GST_FLOW_UNEXPECTED, GST_FLOW_NOT_NEGOTIATED, GST_FLOW_NOT_SUPPORTED, GST_FLOW_CUSTOM_ERROR}) {
        Sink().SetResult(lResult);
        mServer.Push(1, 1, "a");
        mServer.Push(1, 2, "b");
        lBuffers += 2;
        EXPECT_TRUE(Sink().Await("buffer", lBuffers)) << lResult;
    }
}

TEST_F(StreamAlone, CapsThatDownstreamRefusesAreLoggedOnce) {
    MakeH264();
    const DebugCapture lLog("virertsp_stream");
    constexpr char kRefused[] = "What is linked to src1 does not take its caps: not-negotiated";
    Sink().SetResult(GST_FLOW_NOT_NEGOTIATED);
    mServer.Push(1, 1, "a");
    mServer.Push(1, 2, "b");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer", 2));
    mStream->task_run();
    mServer.Push(1, 3, "c");
    ASSERT_TRUE(Sink().Await("buffer", 3));
    EXPECT_TRUE(Eventually([this] { return 0 == mServer.Queued(1); }));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_WARNING, kRefused));
}

TEST_F(StreamAlone, IsDeletedWhileAPushIsUnderWay) {
    MakeH264();
    mServer.Push(1, 1, "x");
    SinkPad& lSink = Sink();
    lSink.SetBlocked(true);
    mStream->task_run();
    ASSERT_TRUE(lSink.Await("buffer"));
    mStream->flush_start();
    Stream::destroy(mStream);
    mStream = nullptr;
    EXPECT_EQ(0U, mServer.Queued(1));
}

TEST_F(StreamAlone, FlushesItsPad) {
    MakeH264();
    EXPECT_FALSE(mStream->is_flushing());
    mStream->flush_start();
    EXPECT_TRUE(mStream->is_flushing());
    mStream->flush_stop();
    EXPECT_FALSE(mStream->is_flushing());
    mStream->end_of_stream();
    std::string lKinds = Sink().Kinds();
    EXPECT_EQ("flush-start flush-stop", lKinds.substr(0, 22));
    EXPECT_EQ("eos", lKinds.substr(lKinds.size() - 3));
}

TEST_F(StreamAlone, IgnoresQosAndSaysWhatElseItDoesNotHandle) {
    MakeH264();
    const DebugCapture lLog("virertsp_stream");
    EXPECT_TRUE(Sink().SendUp(NewQosEvent()));
    EXPECT_TRUE(lLog.All().empty());
    EXPECT_TRUE(Sink().SendUp(gst_event_new_latency(1)));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_WARNING, "Unhandled event (src1 got latency)\n"));
    // Those who seek here learn that nothing happened.
    EXPECT_FALSE(Sink().SendUp(
        gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET, 5, GST_SEEK_TYPE_NONE, -1)));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_WARNING, "Unhandled event (src1 got seek)\n"));
    EXPECT_TRUE(mServer.TakeCalls().size() <= 1);
}

TEST_F(StreamAlone, AnswersDurationAndLatencyQueries) {
    MakeH264();
    gint64 lDuration = 0;
    EXPECT_TRUE(QueryDuration(Sink().Pad(), lDuration) || QueryDuration(Pad(), lDuration));
    EXPECT_EQ(-1, lDuration);
    mStream->set_duration(5000000000);
    EXPECT_TRUE(QueryDuration(Pad(), lDuration));
    EXPECT_EQ(5000000000, lDuration);

    GstQuery* const lLatency = gst_query_new_latency();
    ASSERT_TRUE(gst_pad_query(Pad(), lLatency));
    gboolean lLive = FALSE;
    GstClockTime lLeast = 0;
    GstClockTime lMost = 0;
    gst_query_parse_latency(lLatency, &lLive, &lLeast, &lMost);
    EXPECT_TRUE(lLive);
    EXPECT_GE(lLeast, 100 * GST_MSECOND);
    EXPECT_GE(lMost, lLeast);
    gst_query_unref(lLatency);
}

}  // namespace
}  // namespace ElementTest
