#include <gtest/gtest.h>

#include "support/Pipeline.hpp"
#include "support/SourceFixture.hpp"

namespace ElementTest {
namespace {

constexpr gint64 kLater = 300 * GST_MSECOND;

/// A clock that stands where the test sets it.
class SetClock {
public:
    SetClock() : mClock(static_cast<GstClock*>(g_object_new(Type(), nullptr))) { gst_object_ref_sink(mClock); }
    SetClock(const SetClock&) = delete;
    SetClock& operator=(const SetClock&) = delete;
    ~SetClock() { gst_object_unref(mClock); }

    GstClock* Get() const { return mClock; }
    static void Set(GstClockTime aNow) { sNow = aNow; }

private:
    static GType Type() {
        static const GType sType = g_type_register_static_simple(
            GST_TYPE_CLOCK, "SetClock", sizeof(GstClockClass),
            [](gpointer aClass, gpointer) {
                static_cast<GstClockClass*>(aClass)->get_internal_time = [](GstClock*) { return sNow.load(); };
            },
            sizeof(GstClock), nullptr, static_cast<GTypeFlags>(0));
        return sType;
    }

    static std::atomic<GstClockTime> sNow;
    GstClock* const mClock;
};

std::atomic<GstClockTime> SetClock::sNow{0};

/// Where segments lie in running time.
class SegmentTest : public SourceFixture {
protected:
    SegmentTest() {
        gst_element_set_clock(mElement.Get(), mClock.Get());
        gst_element_set_base_time(mElement.Get(), 1000 * GST_SECOND);
        Now(5 * GST_SECOND);
    }
    ~SegmentTest() override { gst_element_set_clock(mElement.Get(), nullptr); }

    /// The running time.
    static void Now(gint64 aTime) { SetClock::Set(1000 * GST_SECOND + static_cast<GstClockTime>(aTime)); }
    void Play(gint64 aVideo, gint64 aAudio) {
        mServer.Describe({FakeServer::H264(), FakeServer::AAC()});
        mServer.Range(0, 600);
        Push(aVideo, aAudio);
        ASSERT_TRUE(mElement.Play());
        AwaitBoth(1);
    }
    void Push(gint64 aVideo, gint64 aAudio) {
        mServer.Push(0, aVideo, "video");
        mServer.Push(1, aAudio, "audio");
    }
    void AwaitBoth(std::size_t aCount) {
        ASSERT_TRUE(mElement.Sink(0)->Await("buffer", aCount));
        ASSERT_TRUE(mElement.Sink(1)->Await("buffer", aCount));
    }
    /// The running time of a timestamp on the pad of a track, negative where that is.
    gint64 RunningTime(unsigned aTrack, gint64 aTimestamp) {
        GstPad* const lPad = gst_element_get_static_pad(mElement.Get(), ("src" + std::to_string(aTrack)).c_str());
        GstEvent* const lEvent = gst_pad_get_sticky_event(lPad, GST_EVENT_SEGMENT, 0);
        gst_object_unref(lPad);
        GstSegment lSegment;
        gst_event_copy_segment(lEvent, &lSegment);
        gst_event_unref(lEvent);
        guint64 lTime = 0;
        const int lSign =
            gst_segment_to_running_time_full(&lSegment, GST_FORMAT_TIME, static_cast<guint64>(aTimestamp), &lTime);
        return lSign * static_cast<gint64>(lTime);
    }

    SetClock mClock;
};

TEST_F(SegmentTest, ARunBeginsAtThePipelinesRunningTime) {
    ServeH264();
    ASSERT_TRUE(mElement.Play());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(5 * GST_SECOND, RunningTime(0, 0));
}

TEST_F(SegmentTest, TheTracksOfARunKeepTheirDistance) {
    Play(kLater, 2 * kLater);
    const gint64 lVideo = RunningTime(0, kLater);
    EXPECT_EQ(kLater, RunningTime(1, 2 * kLater) - lVideo);
    EXPECT_LE(5 * GST_SECOND - kLater, lVideo);
    EXPECT_GE(5 * GST_SECOND, lVideo);
}

/// Whichever track comes first, and also where the pipeline's time has only begun.
TEST_F(SegmentTest, ATrackThatBeginsEarlierThanTheRunKeepsItsDistance) {
    for (const gint64 lNow : {gint64{0}, gint64{5 * GST_SECOND}}) {
        mElement.Set(GST_STATE_NULL);
        Now(lNow);
        Play(2 * kLater, kLater);
        EXPECT_EQ(-kLater, RunningTime(1, kLater) - RunningTime(0, 2 * kLater));
    }
}

TEST_F(SegmentTest, ATrackThatComesLateInARunKeepsItsDistance) {
    mServer.Describe({FakeServer::H264(), FakeServer::AAC()});
    mServer.Range(0, 600);
    mServer.Push(0, 0, "video");
    ASSERT_TRUE(mElement.Play());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    Now(7 * GST_SECOND);
    mServer.Push(1, 1 * GST_SECOND, "audio");
    ASSERT_TRUE(mElement.Sink(1)->Await("buffer"));
    EXPECT_EQ(6 * GST_SECOND, RunningTime(1, 1 * GST_SECOND));
}

TEST_F(SegmentTest, ASeekBeginsAnotherRun) {
    Play(0, 0);
    Now(9 * GST_SECOND);
    mServer.On("Seek", [this] { Push(60 * GST_SECOND, 60 * GST_SECOND); });
    mElement.Seek(60 * GST_SECOND);
    AwaitBoth(2);
    EXPECT_EQ(9 * GST_SECOND, RunningTime(0, 60 * GST_SECOND));
    EXPECT_EQ(9 * GST_SECOND, RunningTime(1, 60 * GST_SECOND));
}

/// The first buffers are due at once, although the segments begin after the one and before the others: what comes in
/// time is shown in time. The last of them would have to begin before the pipeline's time did.
TEST_F(SegmentTest, TheFirstBuffersAfterAnAccurateSeekAreDueAtOnce) {
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "modern");
    Play(0, 0);
    gint64 lNow = 5 * GST_SECOND;
    for (const gint64 lDistance : {-500 * gint64{GST_MSECOND}, 250 * gint64{GST_MSECOND}, 20 * gint64{GST_SECOND}}) {
        lNow += 1 * GST_SECOND;
        Now(lNow);
        const gint64 lFirst = 60 * gint64{GST_SECOND} + lDistance;
        mServer.On("Seek", [this, lFirst] { Push(lFirst, lFirst); });
        constexpr auto kFlags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
        mElement.Sink(0)->Clear();
        mElement.Sink(1)->Clear();
        EXPECT_TRUE(
            gst_element_send_event(mElement.Get(), gst_event_new_seek(1.0, GST_FORMAT_TIME, kFlags, GST_SEEK_TYPE_SET,
                                                                      60 * GST_SECOND, GST_SEEK_TYPE_NONE, -1)));
        AwaitBoth(1);
        EXPECT_EQ(lNow, RunningTime(0, lFirst)) << lDistance;
        EXPECT_EQ(lNow, RunningTime(1, lFirst)) << lDistance;
    }
}

TEST_F(SegmentTest, APauseBeginsAnotherRun) {
    Play(0, 0);
    ASSERT_NE(GST_STATE_CHANGE_FAILURE, mElement.Set(GST_STATE_PAUSED));
    Now(9 * GST_SECOND);
    mServer.On("Resume", [this] { Push(kLater, kLater); });
    ASSERT_NE(GST_STATE_CHANGE_FAILURE, mElement.Set(GST_STATE_PLAYING));
    AwaitBoth(2);
    EXPECT_EQ(9 * GST_SECOND, RunningTime(0, kLater));
    EXPECT_EQ(9 * GST_SECOND, RunningTime(1, kLater));
}

TEST_F(SegmentTest, AStartFromReadyBeginsAnotherRun) {
    Play(0, 0);
    ASSERT_NE(GST_STATE_CHANGE_FAILURE, mElement.Set(GST_STATE_READY));
    Now(9 * GST_SECOND);
    mElement.Sink(0)->Clear();
    mElement.Sink(1)->Clear();
    Push(0, 0);
    ASSERT_TRUE(mElement.Play());
    AwaitBoth(1);
    EXPECT_EQ(9 * GST_SECOND, RunningTime(0, 0));
    EXPECT_EQ(9 * GST_SECOND, RunningTime(1, 0));
}

/// A pause after the time-out flushes nothing, but the next PLAYING begins a segment.
TEST_F(SegmentTest, APadsSecondSegmentBeginsAnotherRun) {
    Play(0, 0);
    Now(9 * GST_SECOND);
    for (const char* lName : {"src1", "src0"}) {
        GstPad* const lPad = gst_element_get_static_pad(mElement.Get(), lName);
        gst_pad_push_event(lPad, gst_event_new_new_segment(FALSE, 1.0, GST_FORMAT_TIME, kLater, -1, kLater));
        gst_object_unref(lPad);
    }
    EXPECT_EQ(9 * GST_SECOND, RunningTime(0, kLater));
    EXPECT_EQ(9 * GST_SECOND, RunningTime(1, kLater));
}

/// Sound, and picture that begins 0.3 s later: nothing of it is late.
TEST_F(SegmentTest, ATrackThatBeginsLaterIsShownWhole) {
    mServer.Describe({FakeServer::AAC(), FakeServer::H264()});
    mServer.Range(0, 600);
    mServer.Film(20 * GST_MSECOND, {0, kLater});
    Pipeline::Share lSound{};
    Pipeline::Share lPicture{};
    const auto lShowsAll = [&lSound, &lPicture] {
        Pipeline lPipeline;
        lPipeline.SetLocation("rtsp://host/clip");
        lPipeline.Set(GST_STATE_PLAYING);
        lSound = lPipeline.Watch(40, "src0");
        lPicture = lPipeline.Seen("src1");
        // Fifteen of the forty that the sound has had by then are not there.
        return lPicture.mCame >= 20 && lPicture.mCame <= 30 && lPicture.mShown + 5 >= lPicture.mCame &&
               lSound.mShown + 5 >= lSound.mCame;
    };
    // A machine that is late shows less, but not each time.
    EXPECT_TRUE(Eventually(lShowsAll)) << "sound " << lSound.mShown << " of " << lSound.mCame << ", picture "
                                       << lPicture.mShown << " of " << lPicture.mCame;
}

}  // namespace
}  // namespace ElementTest
