#include <gtest/gtest.h>

#include <thread>

#include "support/FakeServer.hpp"
#include "support/Leg.hpp"
#include "support/Pipeline.hpp"

namespace ElementTest {
namespace {

constexpr unsigned kPictures = 25;
constexpr long long kInterval = 20 * GST_MSECOND;

/// What is shown in pipelines with a clock. A pause or a seek must not make pictures late that come in time.
class PipelineSlow : public testing::Test {
protected:
    PipelineSlow() {
        mServer.Describe({FakeServer::H264()});
        mServer.Range(0, 600);
        mServer.Film(kInterval, {0});
    }

    /// Some may be late where the machine is busy; of those that come too late for good a handful is shown.
    static void ExpectAllShown(const Pipeline::Share& aShare) {
        EXPECT_LE(kPictures, aShare.mCame + 5);
        EXPECT_GE(2 * aShare.mShown, aShare.mCame) << "of " << aShare.mCame;
    }
    static void Start(Pipeline& aPipeline) {
        aPipeline.SetLocation("rtsp://host/clip");
        ASSERT_TRUE(aPipeline.Set(GST_STATE_PLAYING));
        ExpectAllShown(aPipeline.Watch(kPictures));
    }
    /// As long as all the pictures take that were shown before it: those after it would come too late by as much.
    static void Wait() { std::this_thread::sleep_for(std::chrono::nanoseconds(kPictures * kInterval)); }

    FakeServer mServer;
};

TEST_F(PipelineSlow, AsMuchIsShownAfterAPause) {
    Pipeline lPipeline;
    Start(lPipeline);
    for (int lTime = 0; lTime < 2; ++lTime) {
        ASSERT_TRUE(lPipeline.Set(GST_STATE_PAUSED));
        Wait();
        ASSERT_TRUE(lPipeline.Resume());
        ExpectAllShown(lPipeline.Watch(kPictures));
    }
}

/// With sinks as they are where nothing is set, and no help from the application.
TEST_F(PipelineSlow, ModernPausesWithOrdinarySinks) {
    Pipeline lPipeline(1, Pipeline::Sinks::kWaiting);
    gst_util_set_object_arg(G_OBJECT(lPipeline.Source()), "profile", "modern");
    Start(lPipeline);
    for (int lTime = 0; lTime < 20; ++lTime) {
        ASSERT_TRUE(lPipeline.Set(GST_STATE_PAUSED));
        ASSERT_TRUE(lPipeline.Set(GST_STATE_PLAYING));
    }
    // What fell due in those moments of playing comes late. It must not stay so.
    lPipeline.Watch(kPictures);
    ASSERT_TRUE(lPipeline.Set(GST_STATE_PAUSED));
    Wait();
    ASSERT_TRUE(lPipeline.Set(GST_STATE_PLAYING));
    ExpectAllShown(lPipeline.Watch(kPictures));
}

TEST_F(PipelineSlow, ModernSeeksWithOrdinarySinks) {
    Pipeline lPipeline(1, Pipeline::Sinks::kWaiting);
    gst_util_set_object_arg(G_OBJECT(lPipeline.Source()), "profile", "modern");
    Start(lPipeline);
    for (const bool lPause : {true, false}) {
        const auto lSeek = [&] {
            EXPECT_TRUE(gst_element_seek_simple(lPipeline.Get(), GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH,
                                                (lPause ? 60 : 5) * GST_SECOND));
        };
        if (lPause) {
            ASSERT_TRUE(lPipeline.Set(GST_STATE_PAUSED));
            lSeek();
            ASSERT_TRUE(lPipeline.Resume());
        } else {
            ChangeWhilePlaying(lPipeline.Get(), lSeek);
        }
        ExpectAllShown(lPipeline.Watch(kPictures));
    }
}

TEST_F(PipelineSlow, ModernPausesAndSeeksFromTwoThreads) {
    Pipeline lPipeline(1, Pipeline::Sinks::kWaiting);
    gst_util_set_object_arg(G_OBJECT(lPipeline.Source()), "profile", "modern");
    Start(lPipeline);
    std::thread lSeeks([&lPipeline] {
        for (unsigned lTime = 0; lTime < 30; ++lTime) {
            gst_element_seek_simple(lPipeline.Get(), GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, lTime * GST_SECOND);
        }
    });
    for (int lTime = 0; lTime < 30; ++lTime) {
        EXPECT_TRUE(lPipeline.Set(GST_STATE_PAUSED));
        EXPECT_TRUE(lPipeline.Set(GST_STATE_PLAYING));
    }
    lSeeks.join();
    // As above: it must not stay so.
    lPipeline.Watch(kPictures);
    ASSERT_TRUE(lPipeline.Set(GST_STATE_PAUSED));
    ASSERT_TRUE(lPipeline.Resume());
    ExpectAllShown(lPipeline.Watch(kPictures));
}

TEST_F(PipelineSlow, AsMuchIsShownAfterASeek) {
    Pipeline lPipeline;
    Start(lPipeline);
    for (const GstClockTime lSecond : {60U, 5U}) {
        ChangeWhilePlaying(lPipeline.Get(), [&] { EXPECT_TRUE(lPipeline.Seek(lSecond * GST_SECOND)); });
        ExpectAllShown(lPipeline.Watch(kPictures));
    }
}

TEST_F(PipelineSlow, AsMuchIsShownAfterAPauseWithASeekInIt) {
    Pipeline lPipeline;
    Start(lPipeline);
    ASSERT_TRUE(lPipeline.Set(GST_STATE_PAUSED));
    ASSERT_TRUE(lPipeline.Seek(60 * GST_SECOND));
    Wait();
    ASSERT_TRUE(lPipeline.Resume());
    ExpectAllShown(lPipeline.Watch(kPictures));
}

TEST_F(PipelineSlow, AsMuchIsShownOfANewChannel) {
    Pipeline lPipeline;
    Start(lPipeline);
    ChangeWhilePlaying(lPipeline.Get(), [&] { lPipeline.SetLocation("rtsp://host/other"); });
    ExpectAllShown(lPipeline.Watch(kPictures));
    mServer.Describe({FakeServer::MP4V()});
    ChangeWhilePlaying(lPipeline.Get(), [&] { lPipeline.SetLocation("rtsp://host/third"); });
    ExpectAllShown(lPipeline.Watch(kPictures));
}

TEST_F(PipelineSlow, AsMuchIsShownAfterReady) {
    Pipeline lPipeline;
    Start(lPipeline);
    ASSERT_TRUE(lPipeline.Set(GST_STATE_READY));
    ASSERT_TRUE(lPipeline.Set(GST_STATE_PLAYING));
    ExpectAllShown(lPipeline.Watch(kPictures));
}

TEST_F(PipelineSlow, ASeekInOneElementLeavesTheOtherAlone) {
    Pipeline lPipeline(2);
    lPipeline.SetLocation("rtsp://host/one", 1);
    Start(lPipeline);
    ChangeWhilePlaying(lPipeline.Get(), [&] { EXPECT_TRUE(lPipeline.Seek(60 * GST_SECOND, 0)); });
    ExpectAllShown(lPipeline.Watch(kPictures, "src0", 0));
    // It shows its pictures meanwhile, at the same pace.
    ExpectAllShown(lPipeline.Seen("src0", 1));
    ChangeWhilePlaying(lPipeline.Get(), [&] { lPipeline.SetLocation("rtsp://host/other", 0); });
    ExpectAllShown(lPipeline.Watch(kPictures, "src0", 0));
    ExpectAllShown(lPipeline.Seen("src0", 1));
}

TEST_F(PipelineSlow, BothElementsGoOnAfterAPause) {
    Pipeline lPipeline(2);
    lPipeline.SetLocation("rtsp://host/one", 1);
    Start(lPipeline);
    ASSERT_TRUE(lPipeline.Set(GST_STATE_PAUSED));
    Wait();
    ASSERT_TRUE(lPipeline.Resume());
    ExpectAllShown(lPipeline.Watch(kPictures, "src0", 0));
    ExpectAllShown(lPipeline.Watch(kPictures, "src0", 1));
}

}  // namespace
}  // namespace ElementTest
