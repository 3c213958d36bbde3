#include "fake/StreamFixture.hpp"
#include "streams/StreamAAC.hpp"
#include "streams/StreamMP4V.hpp"

namespace ElementTest {
namespace {

Segment FirstSegment(const SinkPad& aSink) {
    for (const Item& lItem : aSink.Items()) {
        if ("segment" == lItem.mKind) { return lItem.mSegment; }
    }
    return {true, 0.0, GST_FORMAT_UNDEFINED, 0, 0, 0};
}

FakeServer::Description AACFromTo(const char* aStart, const char* aEnd) {
    FakeServer::Description lDescription = FakeServer::AAC();
    if (nullptr != aStart) { lDescription.emplace_back("StartTime", aStart); }
    if (nullptr != aEnd) { lDescription.emplace_back("EndTime", aEnd); }
    return lDescription;
}

class StreamSegments : public StreamFixture {};

TEST_F(StreamSegments, H264Buffers) {
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

TEST_F(StreamSegments, H264SegmentBeginsAndStandsAtItsFirstBuffer) {
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

TEST_F(StreamSegments, ANewSegmentFollowsAFlush) {
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

TEST_F(StreamSegments, MP4VSegmentStandsAtZeroWithoutAClock) {
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

TEST_F(StreamSegments, MP4VSegmentStandsWhereTheClockIs) {
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

TEST_F(StreamSegments, MP4VSegmentStandsAtZeroBeforeTheBaseTime) {
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

TEST_F(StreamSegments, AACSegmentStopsWhenTheTrackDoes) {
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

TEST_F(StreamSegments, AACTimesAreCutToNanoseconds) {
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

class AACWithoutStop : public StreamFixture, public ::testing::WithParamInterface<Times> {};

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

}  // namespace
}  // namespace ElementTest
