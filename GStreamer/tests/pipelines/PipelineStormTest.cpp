#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "support/FakeServer.hpp"
#include "support/Pipeline.hpp"
#include "support/Watch.hpp"

namespace ElementTest {
namespace {

/// Three threads of an application, each of which does its part to one pipeline with real sinks.
class PipelineStorm : public testing::TestWithParam<Pipeline::Sinks> {
protected:
    PipelineStorm() {
        mServer.Describe({FakeServer::H264(), FakeServer::AAC()});
        mServer.Range(0, 600);
        mServer.Film(20 * GST_MSECOND, {0, 0});
    }

    void Rage(std::chrono::seconds aTime) {
        const Watch lWatch("a pipeline in a storm", aTime + std::chrono::seconds(30));
        Pipeline lPipeline(1, GetParam());
        lPipeline.SetLocation("rtsp://host/clip");
        lPipeline.Set(GST_STATE_PLAYING);
        const auto lEnd = std::chrono::steady_clock::now() + aTime;
        std::thread lChanges([&] { Repeat(lEnd, 1, [&](unsigned aDice) { Change(lPipeline, aDice); }); });
        std::thread lProperties([&] { Repeat(lEnd, 2, [&](unsigned aDice) { SetProperty(lPipeline, aDice); }); });
        Repeat(lEnd, 3, [&](unsigned aDice) { Step(lPipeline, aDice); });
        lChanges.join();
        lProperties.join();
        g_object_set(lPipeline.Source(), "network-available", TRUE, nullptr);
        EXPECT_TRUE(lPipeline.Set(GST_STATE_READY));
        // Sinks that wait do so for ever where their pad has gone.
        if (Pipeline::Sinks::kWaiting == GetParam()) { return; }
        // It plays when it is over.
        EXPECT_TRUE(lPipeline.Set(GST_STATE_PLAYING));
        EXPECT_LE(10U, lPipeline.Watch(10).mCame);
    }

    FakeServer mServer;

private:
    static void Repeat(std::chrono::steady_clock::time_point aEnd, unsigned aSeed,
                       const std::function<void(unsigned)>& aAction) {
        std::mt19937 lNumbers(aSeed);
        while (std::chrono::steady_clock::now() < aEnd) {
            aAction(static_cast<unsigned>(lNumbers() % 1000));
            std::this_thread::sleep_for(std::chrono::milliseconds(lNumbers() % 10));
        }
    }
    static void Change(Pipeline& aPipeline, unsigned aDice) {
        switch (aDice % 3) {
            case 0: aPipeline.SetLocation("rtsp://host/a"); break;
            case 1: aPipeline.SetLocation("rtsp://host/b"); break;
            default: aPipeline.Seek(aDice * GST_MSECOND * 100); break;
        }
    }
    static void SetProperty(Pipeline& aPipeline, unsigned aDice) {
        switch (aDice % 8) {
            case 0: g_object_set(aPipeline.Source(), "network-available", FALSE, nullptr); break;
            case 1: g_object_set(aPipeline.Source(), "referrer", "somebody", nullptr); break;
            default: g_object_set(aPipeline.Source(), "network-available", TRUE, nullptr); break;
        }
    }
    static void Step(Pipeline& aPipeline, unsigned aDice) {
        static const GstState kStates[] = {GST_STATE_NULL,    GST_STATE_READY,   GST_STATE_PLAYING,
                                           GST_STATE_PLAYING, GST_STATE_PLAYING, GST_STATE_PAUSED};
        aPipeline.Set(kStates[aDice % G_N_ELEMENTS(kStates)]);
    }
};

class PipelineStormSlow : public PipelineStorm {};

TEST_P(PipelineStormSlow, EveryCallReturns) {
    Rage(std::chrono::seconds(4));
}

class PipelineStormLong : public PipelineStorm {};

TEST_P(PipelineStormLong, EveryCallReturns) {
    Rage(std::chrono::seconds(60));
}

INSTANTIATE_TEST_SUITE_P(Sinks, PipelineStormSlow,
                         testing::Values(Pipeline::Sinks::kAtOnce, Pipeline::Sinks::kWaiting));
INSTANTIATE_TEST_SUITE_P(Sinks, PipelineStormLong,
                         testing::Values(Pipeline::Sinks::kAtOnce, Pipeline::Sinks::kWaiting));

/// Sinks that wait for a first picture post messages when they flush, and a pipeline changes states for these.
class PipelineWaiting : public testing::Test {
protected:
    PipelineWaiting() : mWatch("a pipeline whose sinks wait", std::chrono::seconds(20)) {
        mServer.Describe({FakeServer::H264()});
        mServer.Range(0, 600);
        mServer.Film(20 * GST_MSECOND, {0});
        mPipeline.SetLocation("rtsp://host/clip");
    }

    FakeServer mServer;
    const Watch mWatch;
    Pipeline mPipeline{1, Pipeline::Sinks::kWaiting};
};

TEST_F(PipelineWaiting, MayBeSoughtAgainAtOnce) {
    ASSERT_TRUE(mPipeline.Set(GST_STATE_PLAYING));
    mPipeline.Watch(5);
    for (unsigned lDistance = 0; lDistance < 30; lDistance += 3) {
        EXPECT_TRUE(mPipeline.Seek(60 * GST_SECOND));
        std::this_thread::sleep_for(std::chrono::milliseconds(lDistance));
        EXPECT_TRUE(mPipeline.Seek(5 * GST_SECOND));
    }
    EXPECT_LE(5U, mPipeline.Watch(5).mCame);
}

TEST_F(PipelineWaiting, MayChangeAfterARefusedStart) {
    mPipeline.Set(GST_STATE_PAUSED);
    g_object_set(mPipeline.Source(), "network-available", FALSE, nullptr);
    mPipeline.Set(GST_STATE_PLAYING);
    g_object_set(mPipeline.Source(), "network-available", TRUE, nullptr);
    EXPECT_TRUE(mPipeline.Seek(60 * GST_SECOND));
    mPipeline.SetLocation("rtsp://host/other");
}

}  // namespace
}  // namespace ElementTest
