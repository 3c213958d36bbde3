#include <atomic>
#include <chrono>
#include <thread>

#include "Player/Exception.hpp"
#include "support/Feeder.hpp"
#include "support/SourceTest.hpp"
#include "support/TimersRun.hpp"

namespace ElementTest {
namespace {

using std::chrono::milliseconds;

class SourceThreads : public testing::Test {
protected:
    SourceThreads() {
        mServer.Describe({FakeServer::H264(), FakeServer::AAC()});
        mServer.Range(0, 20);
        for (int lPacket = 0; lPacket < 50; ++lPacket) {
            mServer.Push(0, lPacket, "x");
            mServer.Push(1, lPacket, "y");
        }
    }
    FakeServer mServer;
};

TEST_F(SourceThreads, SettersWhilePlaying) {
    ElementUnderTest lElement;
    ASSERT_TRUE(lElement.Play());
    std::atomic<bool> lDone{false};
    std::thread lReader([&] {
        while (!lDone) {
            lElement.Text("referrer");
            lElement.Text("location");
        }
    });
    std::thread lOther([&] {
        for (int lRound = 0; lRound < 300; ++lRound) {
            lElement.SetText("network-type", std::to_string(lRound).c_str());
            mServer.Push(0, lRound, "x");
        }
    });
    for (int lRound = 0; lRound < 300; ++lRound) {
        lElement.SetText("referrer", std::to_string(lRound).c_str());
    }
    lOther.join();
    lDone = true;
    lReader.join();
    EXPECT_TRUE(Eventually([this] { return "299" == mServer.Setting("RTSP:SendReferrer"); }));
    EXPECT_TRUE(Eventually([this] { return "299" == mServer.Setting("RTSP:SendNetworkType"); }));
}

TEST_F(SourceThreads, ASetterWaitsForNoServer) {
    ElementUnderTest lElement;
    lElement.SetText("location", "rtsp://host/clip");
    lElement.Set(GST_STATE_READY);
    mServer.Block("Play");
    std::thread lTransition([&lElement] { lElement.Set(GST_STATE_PAUSED); });
    EXPECT_TRUE(mServer.AwaitBlocked());
    const auto lBegin = std::chrono::steady_clock::now();
    lElement.SetText("referrer", "now");
    EXPECT_EQ("now", lElement.Text("referrer"));
    EXPECT_LT(std::chrono::steady_clock::now() - lBegin, std::chrono::seconds(5));
    EXPECT_NE("now", mServer.Setting("RTSP:SendReferrer")) << "the session is busy";
    mServer.Release();
    lTransition.join();
    EXPECT_EQ("now", mServer.Setting("RTSP:SendReferrer"));
}

TEST_F(SourceThreads, ASettingThatComesWhileAnotherIsAppliedIsApplied) {
    ElementUnderTest lElement;
    mServer.On("Configure", [&] {
        mServer.Clear("Configure");
        lElement.SetText("referrer", "late");
    });
    lElement.SetText("network-type", "early");
    EXPECT_EQ("early", mServer.Setting("RTSP:SendNetworkType"));
    EXPECT_EQ("late", mServer.Setting("RTSP:SendReferrer"));
}

TEST_F(SourceThreads, SeeksAndChannelsFromSeveralThreads) {
    ElementUnderTest lElement;
    ASSERT_TRUE(lElement.Play());
    const Feeder lFeeder(mServer);
    std::thread lSeeker([&lElement] {
        for (int lRound = 0; lRound < 20; ++lRound) {
            lElement.Seek(GST_SECOND);
        }
    });
    std::thread lSwitcher([&lElement] {
        for (int lRound = 0; lRound < 20; ++lRound) {
            lElement.SetNetwork(0 != lRound % 2);
        }
    });
    for (int lRound = 0; lRound < 20; ++lRound) {
        lElement.SetText("location", 0 == lRound % 2 ? "rtsp://host/a" : "rtsp://host/b");
    }
    lSeeker.join();
    lSwitcher.join();
    EXPECT_EQ(GST_STATE_PLAYING, lElement.State());
    for (unsigned lTrack : {0U, 1U}) {
        EXPECT_EQ(lElement.Sink(lTrack)->Count("flush-start"), lElement.Sink(lTrack)->Count("flush-stop"));
    }
}

struct Failing {
    const char* mOperation;
    const char* mKind;
    std::function<void()> mThrow;
};

void PrintTo(const Failing& aCase, std::ostream* aOut) {
    *aOut << aCase.mOperation << " throws " << aCase.mKind;
}

class SourceFails : public SourceThreads, public testing::WithParamInterface<Failing> {};

/// Whatever fails in it, each step returns and the next start works.
TEST_P(SourceFails, NothingIsThrownThroughTheElement) {
    ElementUnderTest lElement;
    const Feeder lFeeder(mServer);
    lElement.SetText("location", "rtsp://host/clip");
    lElement.Set(GST_STATE_READY);
    if (std::string("Play") == GetParam().mOperation) {
        mServer.On("Play", GetParam().mThrow);
        EXPECT_EQ(GST_STATE_CHANGE_FAILURE, lElement.Set(GST_STATE_PAUSED));
        EXPECT_EQ(1U, lElement.TakeMessages({"warning"}).size());
        mServer.Clear("Play");
    }
    ASSERT_NE(GST_STATE_CHANGE_FAILURE, lElement.Set(GST_STATE_PAUSED));
    ASSERT_NE(GST_STATE_CHANGE_FAILURE, lElement.Set(GST_STATE_PLAYING));
    lElement.TakeMessages();
    mServer.On(GetParam().mOperation, GetParam().mThrow);
    lElement.SetText("referrer", "x");
    EXPECT_TRUE(lElement.Seek(GST_SECOND));
    lElement.SetText("location", "rtsp://host/other");
    EXPECT_NE(GST_STATE_CHANGE_FAILURE, lElement.Set(GST_STATE_PAUSED));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, lElement.Set(GST_STATE_PLAYING)) << "by resuming";
    EXPECT_NE(GST_STATE_CHANGE_FAILURE, lElement.Set(GST_STATE_PAUSED));
    lElement.SetNetwork(false);
    lElement.SetNetwork(true);
    EXPECT_NE(GST_STATE_CHANGE_FAILURE, lElement.Set(GST_STATE_PLAYING));
    for (unsigned lTrack : {0U, 1U}) {
        const SinkPad* const lSink = lElement.Sink(lTrack);
        EXPECT_EQ(lSink->Count("flush-start"), lSink->Count("flush-stop")) << lSink->Kinds();
    }
    EXPECT_NE(GST_STATE_CHANGE_FAILURE, lElement.Set(GST_STATE_READY));
    EXPECT_NE(GST_STATE_CHANGE_FAILURE, lElement.Set(GST_STATE_NULL));
    EXPECT_THAT(lElement.TakeMessages({"warning"}), testing::Not(IsEmpty()));

    mServer.Clear(GetParam().mOperation);
    EXPECT_TRUE(lElement.Play());
    EXPECT_TRUE(lElement.Sink(0)->Await("buffer"));
}

std::vector<Failing> EveryFailure() {
    const std::vector<std::pair<const char*, std::function<void()>>> lThrows = {
        {"library", Throws<Player::RTSPErr>(0x500)},
        {"standard", [] { throw std::runtime_error("standard"); }},
        {"text", [] { throw "plain text"; }}};
    std::vector<Failing> lCases;
    for (const char* lOperation : {"Play", "Pause", "Resume", "Seek", "Close"}) {
        for (const auto& lThrow : lThrows) {
            lCases.push_back({lOperation, lThrow.first, lThrow.second});
        }
    }
    return lCases;
}

INSTANTIATE_TEST_SUITE_P(Cases, SourceFails, testing::ValuesIn(EveryFailure()));

TEST_F(SourceThreads, AFailureOfReadingIsToldOncePerTrackAndRun) {
    ElementUnderTest lElement;
    ASSERT_TRUE(lElement.Play());
    ASSERT_TRUE(Eventually([this] { return 0 == mServer.Queued(0) && 0 == mServer.Queued(1); }));
    lElement.TakeMessages();
    mServer.On("Produce", Throws<Player::RTSPErr>(2));
    const std::string lError = "error " + std::to_string(0x00110002);
    EXPECT_TRUE(Eventually([&] { return 2 == lElement.CountMessages(lError); }));
    std::this_thread::sleep_for(milliseconds(300));
    EXPECT_EQ(2U, lElement.CountMessages(lError));
    EXPECT_EQ(0U, lElement.CountMessages("other error"));
    mServer.Clear("Produce");
}

TEST_F(SourceTest, ClosingWhatWasNeverOpenedWarnsNobody) {
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_READY));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_NULL));
    EXPECT_THAT(Messages({"error", "warning"}), ElementsAre("error " + std::to_string(0x00010001)));
}

class SourceTimerSlow : public SourceThreads {
protected:
    const TimersRun mTimers;
};

TEST_F(SourceTimerSlow, TheElementMayGoWithTheTimerPending) {
    GstElement* const lElement = gst_element_factory_make("virertspsrc", nullptr);
    gst_object_ref_sink(lElement);
    gpointer lGone = lElement;
    g_object_add_weak_pointer(G_OBJECT(lElement), &lGone);
    g_object_set(lElement, "location", "rtsp://host/clip", nullptr);
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, gst_element_set_state(lElement, GST_STATE_PAUSED));
    // An application that forgets NULL is warned by GStreamer; here it is as if it had not forgotten.
    GST_OBJECT_LOCK(lElement);
    GST_STATE(lElement) = GST_STATE_NULL;
    GST_OBJECT_UNLOCK(lElement);
    gst_object_unref(lElement);
    EXPECT_EQ(nullptr, lGone);
    mServer.TakeCalls();
    std::this_thread::sleep_for(milliseconds(1800));
    EXPECT_THAT(mServer.TakeCalls(), IsEmpty());
}

TEST_F(SourceTimerSlow, MayFireDuringAnyChange) {
    std::vector<std::thread> lApplications;
    for (int lElement = 0; lElement < 12; ++lElement) {
        lApplications.emplace_back([lElement] {
            ElementUnderTest lOne;
            lOne.SetText("location", "rtsp://host/clip");
            lOne.Set(GST_STATE_PAUSED);
            std::this_thread::sleep_for(milliseconds(1470 + 5 * lElement));
            lOne.Set(0 == lElement % 3 ? GST_STATE_PLAYING : 1 == lElement % 3 ? GST_STATE_READY : GST_STATE_NULL);
        });
    }
    for (auto& lApplication : lApplications) {
        lApplication.join();
    }
}

}  // namespace
}  // namespace ElementTest
