#include <thread>

#include "Player/Exception.hpp"
#include "support/SourceFixture.hpp"
#include "support/TimersRun.hpp"
#include "support/Watch.hpp"

namespace ElementTest {
namespace {

/// Applications that call the element from a handler of its signals or messages, on its own threads.
class Handler : public SourceFixture {
protected:
    Handler() : mWatch("a handler", std::chrono::seconds(20)) {
        ServeH264();
        PushOn("Play", 0, "x");
    }
    ~Handler() override {
        GstBus* const lBus = gst_element_get_bus(mElement.Get());
        SetSyncHandler(lBus, nullptr, nullptr);
        gst_object_unref(lBus);
    }

    /// Does this in the first handler of the signal.
    void OnSignal(const char* aSignal, std::function<void()> aAction) {
        mAction = std::move(aAction);
        g_signal_connect_swapped(mElement.Get(), aSignal, G_CALLBACK(+[](Handler* aThis) { aThis->Act(); }), this);
    }
    /// Does this when the message is posted for the first time.
    void OnMessage(const std::string& aMessage, std::function<void()> aAction) {
        mMessage = aMessage;
        mAction = std::move(aAction);
        GstBus* const lBus = gst_element_get_bus(mElement.Get());
        SetSyncHandler(
            lBus,
            [](GstBus*, GstMessage* aPosted, gpointer aThis) {
                auto* const lThis = static_cast<Handler*>(aThis);
                const std::string lPosted = Describe(aPosted);
                if (0 == lPosted.find(lThis->mMessage)) { lThis->Act(); }
                return GST_BUS_PASS;
            },
            this);
        gst_object_unref(lBus);
    }
    void SetLocation() { mElement.SetText("location", "rtsp://host/b"); }
    /// A setter that was called from a handler has returned before the server was asked.
    void Act() {
        if (mActed) { return; }
        mActed = true;
        mServer.TakeCalls();
        mAction();
        mCallsInHandler = mServer.TakeCalls();
    }
    void ExpectAfterwards(const Texts& aCalls) {
        EXPECT_TRUE(mActed);
        EXPECT_EQ(Texts(), mCallsInHandler);
        EXPECT_EQ(aCalls, mServer.TakeCalls());
    }

    std::string mMessage;
    std::function<void()> mAction;
    std::atomic<bool> mActed{false};
    Texts mCallsInHandler;
    const Watch mWatch;
};

const Texts kPlaysOther = {"Play rtsp://host/b 0.000000"};
const Texts kSeeks = {"Seek 5.000000"};

TEST_F(Handler, OfPadAddedSetsTheLocation) {
    OnSignal("pad-added", [this] { SetLocation(); });
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    ExpectAfterwards(kPlaysOther);
    mServer.Push(0, 0, "x");
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(Handler, OfNoMorePadsSeeks) {
    OnSignal("no-more-pads", [this] { EXPECT_TRUE(mElement.Seek(5 * GST_SECOND)); });
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    ExpectAfterwards(kSeeks);
}

TEST_F(Handler, OfAMessageSeeks) {
    OnMessage("duration", [this] { EXPECT_TRUE(mElement.Seek(5 * GST_SECOND)); });
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    ExpectAfterwards(kSeeks);
}

TEST_F(Handler, OfAMessageSetsTheLocation) {
    OnMessage("duration", [this] { SetLocation(); });
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    ExpectAfterwards(kPlaysOther);
}

TEST_F(Handler, OfPadAddedSetsTheLocationDuringAChange) {
    StartPlaying();
    mServer.Describe({FakeServer::MP4V()});
    OnSignal("pad-added", [this] { SetLocation(); });
    mElement.SetText("location", "rtsp://host/a");
    ExpectAfterwards(kPlaysOther);
}

TEST_F(Handler, OfAFailureTriesAnotherLocation) {
    StartPlaying();
    mServer.On("Seek", [this] {
        mServer.Clear("Seek");
        throw Player::NetworkErr(38, "gone");
    });
    OnMessage("error", [this] { SetLocation(); });
    mElement.Seek(5 * GST_SECOND);
    ExpectAfterwards(kPlaysOther);
}

TEST_F(Handler, MayTakeTheNetworkAwayAndBringItBack) {
    OnSignal("pad-added", [this] {
        mElement.SetNetwork(false);
        mElement.SetNetwork(true);
        EXPECT_EQ(TRUE, [this] {
            gboolean lAvailable = FALSE;
            g_object_get(mElement.Get(), "network-available", &lAvailable, nullptr);
            return lAvailable;
        }());
    });
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    ExpectAfterwards({});
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
}

/// What waits for a stream's task is done by another thread than the stream's.
TEST_F(Handler, OnAStreamingThreadSetsTheLocation) {
    OnMessage("buffering 0", [this] { SetLocation(); });
    ASSERT_TRUE(mElement.Play());
    ASSERT_TRUE(Eventually([this] { return mActed.load(); }));
    mServer.Push(0, 1, "x");
    EXPECT_TRUE(Eventually([this] { return kPlaysOther == mServer.TakeCalls(); }));
    EXPECT_EQ(Texts(), mCallsInHandler);
    EXPECT_TRUE(mElement.AwaitMessage("buffering 100"));
}

/// A state change would wait for itself: the handler's call fails, and the start goes on.
TEST_F(Handler, CanNotChangeTheStateFromInsideAChangeOfLocation) {
    StartPlaying();
    mServer.Describe({FakeServer::MP4V()});
    GstStateChangeReturn lResult = GST_STATE_CHANGE_SUCCESS;
    OnSignal("pad-added", [this, &lResult] { lResult = mElement.Set(GST_STATE_PAUSED); });
    mElement.SetText("location", "rtsp://host/a");
    EXPECT_EQ(GST_STATE_CHANGE_FAILURE, lResult);
}

/// Messages wait for no one's turn: a handler may wait for another thread that calls the element.
TEST_F(Handler, MayWaitForAThreadThatCallsTheElement) {
    OnMessage("duration", [this] {
        std::thread([this] {
            SetLocation();
            mElement.SetNetwork(true);
        }).join();
    });
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    mElement.SetNetwork(true);
    EXPECT_EQ("rtsp://host/b", mElement.Text("location"));
}

class Refused : public SourceFixture {
protected:
    void Refuse() {
        mServer.On("Seek", Throws<Player::RTSPErr>(0x457));
        PushOn("Resume", 2 * GST_SECOND, "resumed");
    }
    std::string LastBytes() { return mElement.Sink(0)->Buffers().back().mBytes; }
};

TEST_F(Refused, ASeekWhilePlayingGoesOnWhereItWas) {
    ServeH264();
    StartPlaying();
    Refuse();
    mElement.Seek(5 * GST_SECOND);
    EXPECT_EQ((Texts{"Seek 5.000000", "Resume"}), mServer.TakeCalls());
    EXPECT_EQ(Texts{"error " + std::to_string(0x00110457)}, mElement.TakeMessages({"error"}));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("resumed", LastBytes());
}

TEST_F(Refused, ASeekThatWasPendingGoesOnWhereItWas) {
    ServeH264();
    StartPlaying();
    mElement.Set(GST_STATE_PAUSED);
    mElement.Seek(5 * GST_SECOND);
    mServer.TakeCalls();
    Refuse();
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    EXPECT_EQ((Texts{"Seek 5.000000", "Resume"}), mServer.TakeCalls());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("resumed", LastBytes());
}

TEST_F(Refused, ASeekInALivePresentationPlaysItAgain) {
    ServeH264(0);
    StartPlaying();
    Refuse();
    PushOn("Play", GST_SECOND, "played");
    mElement.Seek(5 * GST_SECOND);
    EXPECT_EQ((Texts{"Seek 5.000000", "Play rtsp://host/clip 0.000000"}), mServer.TakeCalls());
}

TEST_F(Refused, BothRefusalsAreTold) {
    ServeH264();
    StartPlaying();
    Refuse();
    mServer.On("Resume", Throws<Player::RTSPErr>(0x459));
    mElement.Seek(5 * GST_SECOND);
    EXPECT_EQ((Texts{"error " + std::to_string(0x00110457), "error " + std::to_string(0x00110459)}),
              mElement.TakeMessages({"error"}));
    EXPECT_EQ(GST_STATE_PLAYING, mElement.State());
    EXPECT_EQ(mElement.Sink(0)->Count("flush-start"), mElement.Sink(0)->Count("flush-stop"));
}

/// A server that is gone is not asked again.
TEST_F(Refused, ALostServerIsNotAskedToResume) {
    ServeH264();
    StartPlaying();
    Refuse();
    mServer.On("Seek", Throws<Player::NetworkErr>(39));
    mElement.Seek(5 * GST_SECOND);
    EXPECT_EQ(Texts{"Seek 5.000000"}, mServer.TakeCalls());
}

class Race : public SourceFixture {
protected:
    Race() : mWatch("a race", std::chrono::seconds(30)) {
        ServeH264();
        PushOn("Play", 0, "x");
    }
    /// While the server is asked for that, in another thread, sets another location; then lets the server answer.
    void SetLocationDuring(const std::string& aOperation, const std::function<void()>& aTransition) {
        mServer.Block(aOperation);
        std::thread lTransition(aTransition);
        ASSERT_TRUE(mServer.AwaitBlocked());
        mServer.TakeCalls();
        // Returns although the other thread waits for the server.
        mElement.SetText("location", "rtsp://host/b");
        EXPECT_EQ("rtsp://host/b", mElement.Text("location"));
        EXPECT_EQ(Texts(), mServer.TakeCalls());
        mServer.Release();
        lTransition.join();
    }
    /// For the first duration message; in another thread.
    static GstBusSyncReply SetLocationAtDuration(GstBus* /*aBus*/, GstMessage* aPosted, gpointer aThis) {
        auto* const lThis = static_cast<Race*>(aThis);
        if (GST_MESSAGE_DURATION == GST_MESSAGE_TYPE(aPosted) && !lThis->mActed.exchange(true)) {
            std::thread([lThis] { lThis->mElement.SetText("location", "rtsp://host/b"); }).join();
        }
        return GST_BUS_PASS;
    }

    std::atomic<bool> mActed{false};
    const Watch mWatch;
};

TEST_F(Race, ALocationSetDuringTheStartIsPlayedAfterIt) {
    SetLocationDuring("Play", [this] { Preroll(); });
    EXPECT_EQ(kPlaysOther, mServer.TakeCalls());
    mServer.Push(0, 0, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts(), mServer.TakeCalls());
}

/// The start has not read the location yet: the new one is played, and once.
TEST_F(Race, ALocationSetBeforeTheStartAsksTheServerIsPlayedOnce) {
    mElement.SetText("location", "rtsp://host/clip");
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED));
    EXPECT_EQ(kPlaysOther, mServer.TakeCalls());
}

TEST_F(Race, ALocationSetDuringASwitchIsPlayedAfterIt) {
    StartPlaying();
    SetLocationDuring("Play", [this] { mElement.SetText("location", "rtsp://host/a"); });
    EXPECT_EQ(kPlaysOther, mServer.TakeCalls());
}

TEST_F(Race, ALocationSetDuringAPauseIsPlayedAfterIt) {
    StartPlaying();
    SetLocationDuring("Pause", [this] { mElement.Set(GST_STATE_PAUSED); });
    EXPECT_EQ(kPlaysOther, mServer.TakeCalls());
    mServer.Push(0, 0, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts(), mServer.TakeCalls()) << "it plays already";
}

TEST_F(Race, ALocationSetOnTheWayDownIsPlayedNext) {
    StartPlaying();
    SetLocationDuring("Close", [this] { mElement.Set(GST_STATE_NULL); });
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED));
    EXPECT_EQ(kPlaysOther, mServer.TakeCalls());
}

/// The source's part of the start is over, the element still counts as READY: what the source got to is what counts.
TEST_F(Race, ALocationSetByTheLastMessageOfTheStartIsPlayed) {
    GstBus* const lBus = gst_element_get_bus(mElement.Get());
    SetSyncHandler(lBus, SetLocationAtDuration, this);
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    EXPECT_EQ((Texts{"Play rtsp://host/clip 0.000000", "Play rtsp://host/b 0.000000"}), mServer.TakeCalls());
    SetSyncHandler(lBus, nullptr, nullptr);
    gst_object_unref(lBus);
}

class Leftover : public SourceFixture {};

TEST_F(Leftover, AnOldTimeOutIsForgottenWhenASeekBringsMedia) {
    ServeH264();
    StartPlaying();
    mServer.End(0, "Timeout");
    ASSERT_TRUE(mElement.AwaitMessage("error 33043"));
    mServer.Film(20 * GST_MSECOND, {0});
    mElement.Seek(5 * GST_SECOND);
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    mServer.TakeCalls();
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_EQ(Texts{"Pause"}, mServer.TakeCalls());
    mElement.Set(GST_STATE_READY);
    EXPECT_EQ(1U, mServer.PlayersMade());
}

class LeftoverSlow : public SourceFixture {
protected:
    const TimersRun mTimers;
};

TEST_F(LeftoverSlow, APositionAndALossDoNotOutliveReady) {
    ServeH264();
    mServer.Latest(0, 8 * GST_SECOND);
    mServer.Push(0, 8 * GST_SECOND, "x");
    StartPlaying();
    mElement.SetNetwork(false);
    mElement.Set(GST_STATE_READY);
    mElement.SetText("location", "rtsp://host/b");
    mElement.SetNetwork(true);
    mServer.Push(0, 0, "x");
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED));
    mServer.TakeCalls();
    ASSERT_TRUE(Eventually([this] { return Texts{"Pause"} == mServer.TakeCalls(); }));
    mServer.Push(0, 0, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
}

}  // namespace
}  // namespace ElementTest
