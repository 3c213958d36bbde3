#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "support/DebugCapture.hpp"
#include "support/SourceFixture.hpp"
#include "support/Watch.hpp"

namespace ElementTest {

namespace {

constexpr gint64 kSecond = 1000000000;

/// What the streams report, and what becomes of it on the bus.
class Reports : public SourceFixture {
protected:
    void PlayTwoTracks() {
        mServer.Forget();
        Serve({FakeServer::H264(), FakeServer::AAC()});
        mServer.Push(1, 0, "first");
        ASSERT_TRUE(mElement.Play());
        ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
        ASSERT_TRUE(mElement.Sink(1)->Await("buffer"));
    }
};

}  // namespace

TEST_F(Reports, BufferingBeginsWhenNoTrackHasDataAndEndsWithTheFirstThatHas) {
    PlayTwoTracks();
    const DebugCapture lLog("virertsp_source");
    ASSERT_TRUE(mElement.AwaitMessage("buffering 0"));
    // No second message while it lasts.
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    mServer.Push(1, kSecond, "x");
    ASSERT_TRUE(mElement.AwaitMessage("buffering 100"));
    EXPECT_EQ((Texts{"buffering 0", "buffering 100"}), mElement.TakeMessages());
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "kOk -> kNoData on track 0") +
                      lLog.Count(GST_LEVEL_DEBUG, "kOk -> kNoData on track 1"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "kNoData -> kOk on track 1"));
    // And again.
    ASSERT_TRUE(mElement.AwaitMessage("buffering 0"));
}

TEST_F(Reports, ATrackWithDataKeepsBufferingAway) {
    // Whichever track looks, every third time there is one for the first.
    std::atomic<int> lLooks{0};
    mServer.On("Produce", [this, &lLooks] {
        if (0 == ++lLooks % 3) { mServer.Push(0, kSecond, "x"); }
    });
    PlayTwoTracks();
    // The second is without for longer than it takes to say so.
    ASSERT_TRUE(Eventually([&lLooks, lEnd = lLooks + 24] { return lLooks >= lEnd; }));
    EXPECT_EQ(Texts(), mElement.TakeMessages());
    mElement.Set(GST_STATE_READY);
}

TEST_F(Reports, BufferingThatWasNotAnsweredIsAnsweredWhenTheTasksRunAgain) {
    ServeH264();
    StartPlaying();
    ASSERT_TRUE(mElement.AwaitMessage("buffering 0"));
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_EQ(Texts{"buffering 0"}, mElement.TakeMessages());
    mServer.Push(0, kSecond, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"buffering 100"}, mElement.TakeMessages());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(Texts(), mElement.TakeMessages());
}

TEST_F(Reports, BufferingIsAnsweredEvenIfThePlayerWasRebuilt) {
    ServeH264();
    StartPlaying();
    ASSERT_TRUE(mElement.AwaitMessage("buffering 0"));
    mServer.End(0, "Timeout");
    ASSERT_TRUE(mElement.AwaitMessage("error 33043"));
    mElement.Set(GST_STATE_READY);
    EXPECT_EQ(2U, mServer.PlayersMade());
    mElement.TakeMessages();
    ServeH264();
    ASSERT_TRUE(mElement.Play());
    EXPECT_EQ(Texts{"buffering 100"}, mElement.TakeMessages());
}

TEST_F(Reports, ATimeOutIsToldAndThePlayerIsRebuilt) {
    ServeH264();
    mElement.SetText("use-proxy", "a:1");
    StartPlaying();
    EXPECT_EQ("a:1", mServer.Setting("RTSP:UseProxy"));
    const DebugCapture lLog("virertsp_source");
    mServer.End(0, "Timeout");
    ASSERT_TRUE(mElement.AwaitMessage("error 33043"));
    ASSERT_TRUE(Eventually([this] { return 2 == mElement.CountMessages("error 33043") + 1; }));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "got kTimedOut from track 0"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Timed out"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Send buffer event: 33043"));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    // Pausing is left out: the server is gone.
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PAUSED));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    EXPECT_EQ(1U, mServer.PlayersMade());
    EXPECT_EQ(0U, mElement.Sink(0)->Count("flush-start"));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_READY));
    EXPECT_EQ(2U, mServer.PlayersMade());
    EXPECT_EQ(nullptr, mElement.Get()->srcpads);
    // The old player's settings are not passed on.
    ServeH264();
    ASSERT_TRUE(mElement.Play());
    EXPECT_EQ("(none)", mServer.Setting("RTSP:UseProxy"));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_READY));
    EXPECT_EQ(2U, mServer.PlayersMade());
}

TEST_F(Reports, TheWarningOfATimeOutComesOnceAndNamesTheServer) {
    ServeH264();
    StartPlaying();
    mServer.End(0, "Timeout");
    ASSERT_TRUE(mElement.AwaitMessage("error 33043"));
    ASSERT_TRUE(Eventually([this] {
        return 0 != mElement.CountMessages(
                        "warning No media comes from rtsp://host/clip any more: the server or the "
                        "network has gone, or a firewall keeps the UDP packets away. Go to READY and "
                        "play again.");
    }));
    EXPECT_EQ(2U, mElement.TakeMessages().size());
}

TEST_F(Reports, OneTrackThatTimesOutIsNoTimeOut) {
    PlayTwoTracks();
    const DebugCapture lLog("virertsp_source");
    mServer.End(0, "Timeout");
    ASSERT_TRUE(Eventually([&lLog] { return 1 == lLog.Count(GST_LEVEL_DEBUG, "got kTimedOut from track 0"); }));
    mServer.Push(1, kSecond, "x");
    ASSERT_TRUE(mElement.Sink(1)->Await("buffer", 2));
    EXPECT_EQ(Texts(), mElement.TakeMessages({"error", "warning"}));
    mServer.End(1, "Timeout");
    EXPECT_TRUE(mElement.AwaitMessage("error 33043"));
}

TEST_F(Reports, EndsOfTracksAreEndsOfStream) {
    PlayTwoTracks();
    mServer.End(0, "Bye");
    mServer.End(1, "EndTime");
    ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
    ASSERT_TRUE(mElement.Sink(1)->Await("eos"));
    EXPECT_EQ(Texts(), mElement.TakeMessages({"error", "warning"}));
}

class TimeOutsTogether : public Reports, public ::testing::WithParamInterface<GstState> {};

TEST_P(TimeOutsTogether, TheApplicationGoesDownOnTheFirstMessage) {
    for (int lRound = 0; lRound < 10; ++lRound) {
        PlayTwoTracks();
        mServer.End(0, "Timeout");
        mServer.End(1, "Timeout");
        ASSERT_TRUE(mElement.AwaitMessage("error 33043"));
        const Watch lWatch("a transition on a message", std::chrono::seconds(30));
        ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GetParam()));
        const std::size_t lTold = mElement.CountMessages("error 33043");
        EXPECT_TRUE(1 == lTold || 2 == lTold) << lTold;
        mElement.TakeMessages();
    }
}

INSTANTIATE_TEST_SUITE_P(States, TimeOutsTogether, ::testing::Values(GST_STATE_READY, GST_STATE_NULL));

TEST_F(Reports, ATimeOutDuringAPauseGivesWay) {
    for (int lRound = 0; lRound < 12; ++lRound) {
        PlayTwoTracks();
        mServer.End(0, "Timeout");
        mServer.End(1, "Timeout");
        std::this_thread::sleep_for(std::chrono::milliseconds(10 * lRound));
        ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PAUSED));
        ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_NULL));
    }
}

namespace {

/// Keeps who posts the first application message inside the post.
struct Gate {
    std::promise<void> mEntered;
    std::promise<void> mOpen;
    std::atomic<bool> mFirst{true};

    static GstBusSyncReply OnMessage(GstBus*, GstMessage* aMessage, gpointer aThis) {
        auto* const lThis = static_cast<Gate*>(aThis);
        if (GST_MESSAGE_APPLICATION == GST_MESSAGE_TYPE(aMessage) && lThis->mFirst.exchange(false)) {
            lThis->mEntered.set_value();
            lThis->mOpen.get_future().wait_for(std::chrono::seconds(10));
        }
        return GST_BUS_PASS;
    }
};

}  // namespace

TEST_F(Reports, AStreamThatHasToWaitWithItsReportGivesWayToATransition) {
    for (int lRound = 0; lRound < 5; ++lRound) {
        PlayTwoTracks();
        Gate lGate;
        GstBus* const lBus = gst_element_get_bus(mElement.Get());
        SetSyncHandler(lBus, Gate::OnMessage, &lGate);
        const DebugCapture lLog("virertsp_source");
        mServer.End(0, "Timeout");
        mServer.End(1, "Timeout");
        lGate.mEntered.get_future().wait();
        // One track has the turn and the other one wants it; then a transition wants it, too.
        ASSERT_TRUE(Eventually([&lLog] {
            return 1 == lLog.Count(GST_LEVEL_DEBUG, "got kTimedOut from track 0") &&
                   1 == lLog.Count(GST_LEVEL_DEBUG, "got kTimedOut from track 1");
        }));
        auto lDown = std::async(std::launch::async, [this] { return mElement.Set(GST_STATE_NULL); });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        lGate.mOpen.set_value();
        ASSERT_EQ(std::future_status::ready, lDown.wait_for(std::chrono::seconds(10)));
        EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, lDown.get());
        SetSyncHandler(lBus, nullptr, nullptr);
        gst_object_unref(lBus);
    }
}

TEST_F(Reports, AFailureWhileStreamingIsToldOnceAndTheTrackGoesOn) {
    ServeH264();
    StartPlaying();
    mServer.On("Produce", Throws<Player::NetworkErr>(38, "Socket::Read(): closed"));
    ASSERT_TRUE(mElement.AwaitMessage("error 196646"));
    ASSERT_TRUE(mElement.AwaitMessage("buffering 0"));
    EXPECT_EQ((Texts{"error 196646",
                     "warning Receiving rtsp://host/clip failed: the server could not be reached or does not answer; "
                     "check the address and the network.",
                     "buffering 0"}),
              mElement.TakeMessages());
    mServer.Clear("Produce");
    mServer.End(0, "Timeout");
    EXPECT_TRUE(mElement.AwaitMessage("error 33043"));
}

TEST_F(Reports, SettingsDoNotWaitForTheServer) {
    ServeH264();
    StartPlaying();
    mServer.Block("Produce");
    ASSERT_TRUE(mServer.AwaitBlocked());
    // A streaming thread has the player now.
    mElement.SetText("network-type", "first");
    mElement.SetText("network-type", "second");
    mElement.SetText("referrer", "third");
    EXPECT_EQ("(none)", mServer.Setting("RTSP:SendReferrer"));
    EXPECT_EQ("second", mElement.Text("network-type"));
    mServer.Release();
    ASSERT_TRUE(Eventually([this] { return "third" == mServer.Setting("RTSP:SendReferrer"); }));
    EXPECT_EQ("second", mServer.Setting("RTSP:SendNetworkType"));
}

TEST_F(Reports, SettingsMadeDuringATransitionReachTheSessionWithoutFurtherCalls) {
    ServeH264();
    mServer.Block("Play");
    auto lPreroll = std::async(std::launch::async, [this] { Preroll(); });
    ASSERT_TRUE(mServer.AwaitBlocked());
    mElement.SetText("referrer", "late");
    mServer.Release();
    lPreroll.wait();
    EXPECT_EQ("late", mServer.Setting("RTSP:SendReferrer"));
}

TEST_F(Reports, ARefusedSettingOfAnotherThreadIsTold) {
    ServeH264();
    StartPlaying();
    mServer.Block("Produce");
    ASSERT_TRUE(mServer.AwaitBlocked());
    mServer.On("Configure", Throws<Player::SystemErr>(22, "no"));
    mElement.SetText("referrer", "bad");
    mServer.Release();
    EXPECT_TRUE(mElement.AwaitMessage("error 65558"));
}

TEST_F(Reports, ManySettersAndStreamsAtOnceLeaveNothingBehind) {
    Serve({FakeServer::H264(), FakeServer::AAC()});
    ASSERT_TRUE(mElement.Play());
    std::vector<std::thread> lSetters;
    for (const char* lProperty : {"use-proxy", "referrer", "network-type"}) {
        lSetters.emplace_back([this, lProperty] {
            for (int lRound = 0; lRound <= 300; ++lRound) {
                mElement.SetText(lProperty, std::to_string(lRound).c_str());
                mElement.Text(lProperty);
                mServer.Push(lRound % 2 == 0 ? 0U : 1U, lRound, "x");
            }
        });
    }
    for (std::thread& lSetter : lSetters) {
        lSetter.join();
    }
    for (const char* lKey : {"RTSP:UseProxy", "RTSP:SendReferrer", "RTSP:SendNetworkType"}) {
        EXPECT_TRUE(Eventually([this, lKey] { return "300" == mServer.Setting(lKey); })) << lKey;
    }
}

}  // namespace ElementTest
