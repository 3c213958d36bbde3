#include "streams/Stream.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "streams/StreamAAC.hpp"
#include "streams/StreamH264.hpp"
#include "streams/StreamMP4V.hpp"
#include "support/DebugCapture.hpp"
#include "support/ElementUnderTest.hpp"
#include "support/FakeServer.hpp"

namespace ElementTest {

using nsGstVireRtspSrc::kNoData;
using nsGstVireRtspSrc::kOk;
using nsGstVireRtspSrc::kTimedOut;
using nsGstVireRtspSrc::PlayerAccess;
using nsGstVireRtspSrc::Stream;
using nsGstVireRtspSrc::StreamStatus;

namespace {

using Clock = std::chrono::steady_clock;

class Controller : public nsGstVireRtspSrc::StreamController {
public:
    struct Report {
        StreamStatus mStatus;
        unsigned mTrack;
        Clock::time_point mTime;
    };

    void stream_controller_status(StreamStatus aStatus, unsigned int aTrack) override {
        const std::lock_guard<std::mutex> lLock(mMutex);
        if (mOnStatus) { mOnStatus(aStatus); }
        mReports.push_back({aStatus, aTrack, Clock::now()});
    }
    void stream_controller_exception(const Player::Exception& aException, unsigned int aTrack) override {
        const std::lock_guard<std::mutex> lLock(mMutex);
        mExceptions.emplace_back(aException.Code(), aTrack);
    }

    bool stream_controller_waits() const override { return mWaits; }
    void Wait() { mWaits = true; }

    /// Is called with each report, on its thread.
    void OnStatus(std::function<void(StreamStatus)> aAction) {
        const std::lock_guard<std::mutex> lLock(mMutex);
        mOnStatus = std::move(aAction);
    }

    std::vector<Report> Reports() const {
        const std::lock_guard<std::mutex> lLock(mMutex);
        return mReports;
    }
    std::size_t Count(StreamStatus aStatus) const {
        std::size_t lCount = 0;
        for (const Report& lReport : Reports()) {
            lCount += aStatus == lReport.mStatus;
        }
        return lCount;
    }
    std::vector<std::pair<Player::UInt, unsigned>> Exceptions() const {
        const std::lock_guard<std::mutex> lLock(mMutex);
        return mExceptions;
    }

private:
    mutable std::mutex mMutex;
    std::function<void(StreamStatus)> mOnStatus;
    std::vector<Report> mReports;
    std::vector<std::pair<Player::UInt, unsigned>> mExceptions;
    bool mWaits = false;  ///< Set before the stream runs.
};

/// One stream on its own, for track 1 of what is described; its element is said to be PLAYING.
class StreamAlone : public ::testing::Test {
protected:
    ~StreamAlone() override {
        if (nullptr != mStream) { Stream::destroy(mStream); }
        mElement.Force(GST_STATE_NULL);
    }

    template <typename T>
    void Make(const FakeServer::Description& aDescription) {
        mServer.Describe({FakeServer::AAC(), aDescription});
        PlayerAccess::Hold(mPlayer)->Play("rtsp://host", Player::Time(0));
        mStream = new T(mElement.Get(), &mController, mPlayer, 1);
        mElement.Force(GST_STATE_PLAYING);
    }
    void MakeH264() { Make<nsGstVireRtspSrc::StreamH264>(FakeServer::H264()); }

    SinkPad& Sink() { return *mElement.Sink(1); }
    GstPad* Pad() { return static_cast<GstPad*>(mElement.Get()->srcpads->data); }

    FakeServer mServer;
    PlayerAccess mPlayer;
    ElementUnderTest mElement;
    Controller mController;
    Stream* mStream = nullptr;
};

constexpr auto kALittle = std::chrono::milliseconds(350);  // three polls

}  // namespace

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

TEST_F(StreamAlone, ReportsMissingDataEveryHalfSecond) {
    MakeH264();
    const Clock::time_point lStart = Clock::now();
    mStream->task_run();
    EXPECT_EQ(kOk, mStream->status_get());
    ASSERT_TRUE(Eventually([this] { return mController.Reports().size() >= 3; }));
    EXPECT_EQ(kNoData, mStream->status_get());
    EXPECT_EQ(3U, mController.Count(kNoData));
    Clock::time_point lBefore = lStart;
    for (const Controller::Report& lReport : mController.Reports()) {
        EXPECT_EQ(1U, lReport.mTrack);
        EXPECT_GE(lReport.mTime - lBefore, std::chrono::milliseconds(490));
        EXPECT_LE(lReport.mTime - lBefore, std::chrono::milliseconds(1500));
        lBefore = lReport.mTime;
    }
}

namespace {

/// A descriptor that is readable once something was written.
class Pipe {
public:
    Pipe() { EXPECT_EQ(0, pipe(mEnds)); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        close(mEnds[0]);
        close(mEnds[1]);
    }
    void Write() { EXPECT_EQ(1, write(mEnds[1], "x", 1)); }
    int Descriptor() const { return mEnds[0]; }

private:
    int mEnds[2] = {-1, -1};
};

}  // namespace

TEST_F(StreamAlone, ThatWaitsLooksAgainAsSoonAsSomethingArrives) {
    Pipe lPipe;
    mServer.AwaitWith(lPipe.Descriptor());
    mController.Wait();
    std::atomic<int> lLooks{0};
    mServer.On("Produce", [&lLooks] { ++lLooks; });
    MakeH264();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    EXPECT_LE(lLooks, 7) << "a look per interval, when nothing arrives";
    lPipe.Write();  // and is never read
    const int lBefore = lLooks;
    ASSERT_TRUE(Eventually([this] { return 2 == mController.Count(kNoData); }));
    EXPECT_GE(lLooks - lBefore, 12) << "in half a second";
}

TEST_F(StreamAlone, ThatDoesNotWaitRestsWhateverArrives) {
    Pipe lPipe;
    lPipe.Write();
    mServer.AwaitWith(lPipe.Descriptor());
    std::atomic<int> lLooks{0};
    mServer.On("Produce", [&lLooks] { ++lLooks; });
    MakeH264();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    EXPECT_LE(lLooks, 7);
}

TEST_F(StreamAlone, ThatWaitsDeliversAndEndsAsOthersDo) {
    Pipe lPipe;
    lPipe.Write();
    mServer.AwaitWith(lPipe.Descriptor());
    mController.Wait();
    MakeH264();
    mStream->task_run();
    mServer.Push(1, 1500000000, "first");
    ASSERT_TRUE(Sink().Await("buffer"));
    mServer.Push(1, 1540000000, "second");
    mServer.End(1, "Bye");
    ASSERT_TRUE(Sink().Await("eos"));
    EXPECT_EQ(2U, Sink().Count("buffer"));
}

TEST_F(StreamAlone, ReportsOkOnceWhenDataComesBack) {
    MakeH264();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    mServer.Push(1, 1, "a");
    mServer.Push(1, 2, "b");
    ASSERT_TRUE(Sink().Await("buffer", 2));
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kOk); }));
    mServer.Push(1, 3, "c");
    ASSERT_TRUE(Sink().Await("buffer", 3));
    EXPECT_EQ(1U, mController.Count(kOk));
    EXPECT_EQ(kOk, mStream->status_get());
    EXPECT_EQ(kOk, mController.Reports().back().mStatus);
    EXPECT_EQ(1U, mController.Reports().back().mTrack);
}

TEST_F(StreamAlone, DataThatNeverWasMissingIsNotReported) {
    MakeH264();
    for (int lPacket = 0; lPacket < 3; ++lPacket) {
        mServer.Push(1, lPacket, "x");
    }
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer", 3));
    EXPECT_TRUE(mController.Reports().empty());
}

TEST_F(StreamAlone, APacketStartsTheWaitAnew) {
    MakeH264();
    mStream->task_run();
    const Clock::time_point lEnd = Clock::now() + std::chrono::milliseconds(1200);
    for (int lPacket = 1; Clock::now() < lEnd; ++lPacket) {
        mServer.Push(1, lPacket, "x");
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
    }
    EXPECT_EQ(0U, mController.Count(kNoData));
}

TEST_F(StreamAlone, BeingRunStartsTheWaitAnew) {
    MakeH264();
    mStream->task_run();
    std::this_thread::sleep_for(kALittle);
    mStream->task_pause();
    mStream->task_wait();
    const Clock::time_point lStart = Clock::now();
    const std::size_t lBefore = mController.Reports().size();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this, lBefore] { return mController.Reports().size() > lBefore; }));
    EXPECT_GE(mController.Reports()[lBefore].mTime - lStart, std::chrono::milliseconds(490));
}

TEST_F(StreamAlone, BeingRunForgetsThatThereWasNoData) {
    MakeH264();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    mStream->task_pause();
    mStream->task_wait();
    EXPECT_EQ(kNoData, mStream->status_get());
    // It looks for no packet yet.
    mElement.Force(GST_STATE_PAUSED);
    mStream->task_run();
    EXPECT_EQ(kOk, mStream->status_get());
}

TEST_F(StreamAlone, EndsWithOneEndOfStreamAndIdles) {
    MakeH264();
    mServer.Push(1, 1, "last");
    mServer.End(1, "Bye");
    const DebugCapture lLog("virertsp_stream");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("eos"));
    mServer.Push(1, 2, "too late");
    std::this_thread::sleep_for(kALittle);
    EXPECT_EQ(LegPreamble() + "segment buffer eos", Sink().Kinds());
    EXPECT_FALSE(mStream->task_is_running());
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "End of stream for track 1\n"));
    EXPECT_LE(2U, lLog.Count(GST_LEVEL_DEBUG, "Unexpected - task is not running\n"));
    EXPECT_TRUE(mController.Reports().empty());
    EXPECT_EQ(1U, mServer.Queued(1));
}

TEST_F(StreamAlone, MediaThatComesWithTheEndGoesOutBeforeIt) {
    for (const char* const lWhy : {"Bye", "EndTime", "Unknown"}) {
        SCOPED_TRACE(lWhy);
        MakeH264();
        mServer.PushOnTakeIn(1, {"last but one", "last"}, lWhy);
        mStream->task_run();
        ASSERT_TRUE(Sink().Await("eos"));
        EXPECT_EQ(LegPreamble() + "segment buffer buffer eos", Sink().Kinds());
        Stream::destroy(mStream);
        mStream = nullptr;
    }
}

TEST_F(StreamAlone, MediaThatComesWithTheTimeOutGoesOutBeforeItIsReported) {
    MakeH264();
    mServer.PushOnTakeIn(1, {"last"}, "Timeout");
    std::atomic<std::size_t> lBuffers{0};
    mController.OnStatus([this, &lBuffers](StreamStatus) { lBuffers = Sink().Count("buffer"); });
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kTimedOut); }));
    EXPECT_EQ(1U, lBuffers);
    EXPECT_EQ(0U, Sink().Count("eos"));
}

/// The end of a described range is reckoned by the clock, and a sender's last packet may be of that very moment.
TEST_F(StreamAlone, MediaThatComesShortlyAfterTheEndGoesOutBeforeIt) {
    MakeH264();
    mServer.End(1, "EndTime");
    mServer.PushOnTakeIn(1, {"late"}, "");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("eos"));
    EXPECT_EQ(LegPreamble() + "segment buffer eos", Sink().Kinds());
}

TEST_F(StreamAlone, AFailureAfterTheEndDoesNotKeepItBack) {
    MakeH264();
    mServer.End(1, "Bye");
    mStream->task_run();
    mServer.On("TakeIn", [this] { mServer.On("Produce", Throws<Player::RTSPErr>(2)); });
    EXPECT_TRUE(Sink().Await("eos"));
}

TEST_F(StreamAlone, GoesOnAfterItsEndWhenItIsRunAgain) {
    MakeH264();
    mServer.End(1, "EndTime");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("eos"));
    mStream->task_pause();
    mStream->flush_start();
    mStream->task_wait();
    mServer.Push(1, 7, "again");
    Sink().Clear();
    mStream->flush_stop();
    mStream->task_run();
    EXPECT_TRUE(Sink().Await("buffer"));
    EXPECT_EQ("flush-stop segment buffer", Sink().Kinds().substr(0, 25));
}

TEST_F(StreamAlone, ReportsItsTimeOutOnceAndIdles) {
    MakeH264();
    mServer.End(1, "Timeout");
    const DebugCapture lLog("virertsp_stream");
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kTimedOut); }));
    std::this_thread::sleep_for(kALittle);
    EXPECT_EQ(1U, mController.Reports().size());
    EXPECT_EQ(1U, mController.Reports()[0].mTrack);
    EXPECT_EQ(kTimedOut, mStream->status_get());
    EXPECT_FALSE(mStream->task_is_running());
    EXPECT_EQ(0U, Sink().Count("eos"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "RTP/RTCP timed out for track 1\n"));
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
        mStream->task_wait();
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
    for (const GstFlowReturn lResult : {GST_FLOW_NOT_NEGOTIATED, GST_FLOW_NOT_SUPPORTED, GST_FLOW_CUSTOM_ERROR}) {
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

TEST_F(StreamAlone, AFailureIsToldOnceAndCountsAsNoPacket) {
    MakeH264();
    mServer.On("Produce", Throws<Player::RTSPErr>(2));
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 2 == mController.Count(kNoData); }));
    const std::vector<std::pair<Player::UInt, unsigned>> lTold = {{0x110002, 1U}};
    EXPECT_EQ(lTold, mController.Exceptions());
    // Told again when the task is run again.
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 2 == mController.Exceptions().size(); }));
    mServer.Clear("Produce");
    mServer.End(1, "Timeout");
    EXPECT_TRUE(Eventually([this] { return 1 == mController.Count(kTimedOut); }));
}

TEST_F(StreamAlone, OtherExceptionsGoNoFurtherEither) {
    MakeH264();
    mServer.On("Produce", [] { throw std::runtime_error("no library exception"); });
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    mServer.On("Produce", [] { throw "a text"; });
    ASSERT_TRUE(Eventually([this] { return 2 == mController.Count(kNoData); }));
    EXPECT_TRUE(mController.Exceptions().empty());
    mServer.Clear("Produce");
    mServer.Push(1, 1, "x");
    EXPECT_TRUE(Sink().Await("buffer"));
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

TEST_F(StreamAlone, H264Buffers) {
    MakeH264();
    mServer.Push(1, 1500000000, "first");
    mServer.Push(1, 1540000000, "second");
    mServer.Push(1, 0, "zero");
    mServer.Push(1, -1000000000, "negative");
    mServer.Push(1, 1580000000, "");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer", 5));
    const std::vector<Item> lBuffers = Sink().Buffers();
    const struct {
        const char* mBytes;
        GstClockTime mTimestamp;
    } lExpected[] = {{"first", 1500000000}, {"second", 1540000000}, {"zero", 0}, {"negative", 0}, {"", 1580000000}};
    for (std::size_t lIdx = 0; lIdx < 5; ++lIdx) {
        EXPECT_EQ(lExpected[lIdx].mBytes, lBuffers[lIdx].mBytes);
        EXPECT_EQ(lExpected[lIdx].mTimestamp, lBuffers[lIdx].mTimestamp);
        EXPECT_EQ(GST_CLOCK_TIME_NONE, lBuffers[lIdx].mDuration);
        EXPECT_EQ(lIdx, lBuffers[lIdx].mOffset);
        EXPECT_EQ(lIdx, lBuffers[lIdx].mOffsetEnd);
        EXPECT_EQ(0 == lIdx, lBuffers[lIdx].mDiscont);
    }
    EXPECT_EQ(1U, Sink().Count("segment"));
}

namespace {

Segment FirstSegment(const SinkPad& aSink) {
    for (const Item& lItem : aSink.Items()) {
        if ("segment" == lItem.mKind) { return lItem.mSegment; }
    }
    return {true, 0.0, GST_FORMAT_UNDEFINED, 0, 0, 0};
}

}  // namespace

TEST_F(StreamAlone, H264SegmentBeginsAndStandsAtItsFirstBuffer) {
    MakeH264();
    mServer.Push(1, 1500000000, "x");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer"));
    const Segment lSegment = FirstSegment(Sink());
    EXPECT_FALSE(lSegment.mUpdate);
    EXPECT_EQ(1.0, lSegment.mRate);
    EXPECT_EQ(GST_FORMAT_TIME, lSegment.mFormat);
    EXPECT_EQ(1500000000, lSegment.mStart);
    EXPECT_EQ(-1, lSegment.mStop);
    EXPECT_EQ(1500000000, lSegment.mPosition);
}

TEST_F(StreamAlone, ANewSegmentFollowsAFlush) {
    MakeH264();
    mServer.Push(1, 1000000000, "a");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer"));
    mStream->task_pause();
    mStream->flush_start();
    mStream->task_wait();
    Sink().Clear();
    mServer.Push(1, 9000000000, "b");
    mServer.Push(1, 9100000000, "c");
    mStream->flush_stop();
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer", 2));
    EXPECT_EQ("flush-stop segment buffer buffer", Sink().Kinds());
    EXPECT_EQ(9000000000, FirstSegment(Sink()).mStart);
    EXPECT_TRUE(Sink().Buffers()[0].mDiscont);
    EXPECT_FALSE(Sink().Buffers()[1].mDiscont);
    // The counter goes on.
    EXPECT_EQ(1U, Sink().Buffers()[0].mOffset);
}

TEST_F(StreamAlone, MP4VSegmentStandsAtZeroWithoutAClock) {
    Make<nsGstVireRtspSrc::StreamMP4V>(FakeServer::MP4V());
    mServer.Push(1, 1500000000, "x");
    mServer.Push(1, 1600000000, "y");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer", 2));
    const Segment lSegment = FirstSegment(Sink());
    EXPECT_EQ(1500000000, lSegment.mStart);
    EXPECT_EQ(-1, lSegment.mStop);
    EXPECT_EQ(0, lSegment.mPosition);
    EXPECT_EQ(0U, Sink().Buffers()[0].mOffset);
    EXPECT_EQ(1U, Sink().Buffers()[1].mOffset);
}

TEST_F(StreamAlone, MP4VSegmentStandsWhereTheClockIs) {
    Make<nsGstVireRtspSrc::StreamMP4V>(FakeServer::MP4V());
    GstClock* const lClock = gst_system_clock_obtain();
    gst_element_set_clock(mElement.Get(), lClock);
    const GstClockTime lBase = gst_clock_get_time(lClock) - 5 * GST_SECOND;
    gst_element_set_base_time(mElement.Get(), lBase);
    mServer.Push(1, 1500000000, "x");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer"));
    const auto lNow = static_cast<gint64>(gst_clock_get_time(lClock) - lBase);
    const gint64 lPosition = FirstSegment(Sink()).mPosition;
    EXPECT_GE(lPosition, 5 * static_cast<gint64>(GST_SECOND));
    EXPECT_LE(lPosition, lNow);
    gst_element_set_clock(mElement.Get(), nullptr);
    gst_object_unref(lClock);
}

TEST_F(StreamAlone, MP4VSegmentStandsAtZeroBeforeTheBaseTime) {
    Make<nsGstVireRtspSrc::StreamMP4V>(FakeServer::MP4V());
    GstClock* const lClock = gst_system_clock_obtain();
    gst_element_set_clock(mElement.Get(), lClock);
    gst_element_set_base_time(mElement.Get(), gst_clock_get_time(lClock) + 100 * GST_SECOND);
    mServer.Push(1, 1, "x");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer"));
    EXPECT_EQ(0, FirstSegment(Sink()).mPosition);
    gst_element_set_clock(mElement.Get(), nullptr);
    gst_object_unref(lClock);
}

namespace {

FakeServer::Description AACFromTo(const char* aStart, const char* aEnd) {
    FakeServer::Description lDescription = FakeServer::AAC();
    if (nullptr != aStart) { lDescription.emplace_back("StartTime", aStart); }
    if (nullptr != aEnd) { lDescription.emplace_back("EndTime", aEnd); }
    return lDescription;
}

}  // namespace

TEST_F(StreamAlone, AACSegmentStopsWhenTheTrackDoes) {
    Make<nsGstVireRtspSrc::StreamAAC>(AACFromTo("1.25", "11.5"));
    mServer.Push(1, 1500000000, "x");
    mServer.Push(1, 1600000000, "y");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer", 2));
    const Segment lSegment = FirstSegment(Sink());
    EXPECT_EQ(1500000000, lSegment.mStart);
    EXPECT_EQ(11750000000, lSegment.mStop);
    EXPECT_EQ(1500000000, lSegment.mPosition);
    for (const Item& lBuffer : Sink().Buffers()) {
        EXPECT_EQ(0U, lBuffer.mOffset);
        EXPECT_EQ(0U, lBuffer.mOffsetEnd);
    }
}

TEST_F(StreamAlone, AACTimesAreCutToNanoseconds) {
    Make<nsGstVireRtspSrc::StreamAAC>(AACFromTo("0", "2.0000000019"));
    mServer.Push(1, 0, "x");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer"));
    EXPECT_EQ(2000000001, FirstSegment(Sink()).mStop);
}

/// When a track begins and ends; null where the description does not say.
struct Times {
    const char* mStart;
    const char* mEnd;
};

void PrintTo(const Times& aTimes, std::ostream* aOut) {
    *aOut << (nullptr == aTimes.mStart ? "none" : aTimes.mStart) << " to "
          << (nullptr == aTimes.mEnd ? "none" : aTimes.mEnd);
}

class AACWithoutStop : public StreamAlone, public ::testing::WithParamInterface<Times> {};

TEST_P(AACWithoutStop, HasAnOpenSegment) {
    Make<nsGstVireRtspSrc::StreamAAC>(AACFromTo(GetParam().mStart, GetParam().mEnd));
    mServer.Push(1, 1500000000, "x");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer"));
    EXPECT_EQ(-1, FirstSegment(Sink()).mStop);
    EXPECT_EQ(1500000000, FirstSegment(Sink()).mPosition);
}

INSTANTIATE_TEST_SUITE_P(Times, AACWithoutStop,
                         ::testing::Values(Times{nullptr, nullptr}, Times{"1", nullptr}, Times{nullptr, "2"},
                                           Times{"5", "2"}, Times{"0", "1e300"}, Times{"0", "9223372036"},
                                           Times{"nan", "inf"}, Times{"0", ""}, Times{"now", ""}, Times{"", "9"}));

}  // namespace ElementTest
