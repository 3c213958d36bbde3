#include <thread>

#include "support/DebugCapture.hpp"
#include "support/SourceFixture.hpp"

namespace ElementTest {

namespace {

constexpr gint64 kSecond = 1000000000;
constexpr const char* kWarn = "Warn";

struct Cell {
    GstState mRemembered;
    GstState mCurrent;
    Texts mExpected;  ///< Calls, or `kWarn`.
};

std::string NameOf(const ::testing::TestParamInfo<Cell>& aInfo) {
    return std::string(gst_element_state_get_name(aInfo.param.mRemembered)) + "To" +
           gst_element_state_get_name(aInfo.param.mCurrent);
}

class NetworkTable : public SourceFixture, public ::testing::WithParamInterface<Cell> {};

class NetworkSwitch : public SourceFixture {};

}  // namespace

TEST_P(NetworkTable, TheServerCatchesUpWithTheElement) {
    ServeH264();
    ASSERT_TRUE(mElement.Play());
    for (const GstState lState : {GST_STATE_PAUSED, GST_STATE_READY, GST_STATE_NULL}) {
        if (GetParam().mRemembered <= lState) { mElement.Set(lState); }
    }
    mElement.SetNetwork(false);
    mServer.TakeCalls();
    const DebugCapture lLog("virertsp_source");
    if (GetParam().mCurrent > GetParam().mRemembered) {
        // The element itself refuses to go up.
        mElement.Force(GetParam().mCurrent);
    } else {
        mElement.Set(GetParam().mCurrent);
    }
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    mElement.SetNetwork(true);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Network-available: TRUE"));
    const bool lWarns = Texts{kWarn} == GetParam().mExpected;
    EXPECT_EQ(lWarns ? Texts() : GetParam().mExpected, mServer.TakeCalls());
    EXPECT_EQ(lWarns ? 1U : 0U, lLog.Count(GST_LEVEL_WARNING, "Unexpected state transition"));
    mElement.Force(GST_STATE_READY);
}

// PAUSED was reached from PLAYING: the server is paused, to be resumed at 0 s.
INSTANTIATE_TEST_SUITE_P(
    Cells, NetworkTable,
    ::testing::Values(
        Cell{GST_STATE_NULL, GST_STATE_NULL, {}}, Cell{GST_STATE_NULL, GST_STATE_READY, {kWarn}},
        Cell{GST_STATE_NULL, GST_STATE_PAUSED, {kWarn}}, Cell{GST_STATE_NULL, GST_STATE_PLAYING, {kWarn}},
        Cell{GST_STATE_READY, GST_STATE_NULL, {"Close"}}, Cell{GST_STATE_READY, GST_STATE_READY, {}},
        Cell{GST_STATE_READY, GST_STATE_PAUSED, {kWarn}}, Cell{GST_STATE_READY, GST_STATE_PLAYING, {kWarn}},
        Cell{GST_STATE_PAUSED, GST_STATE_NULL, {"Close"}}, Cell{GST_STATE_PAUSED, GST_STATE_READY, {}},
        Cell{GST_STATE_PAUSED, GST_STATE_PAUSED, {}}, Cell{GST_STATE_PAUSED, GST_STATE_PLAYING, {"Seek 0.000000"}},
        Cell{GST_STATE_PLAYING, GST_STATE_NULL, {"Pause", "Close"}},
        Cell{GST_STATE_PLAYING, GST_STATE_READY, {"Pause"}}, Cell{GST_STATE_PLAYING, GST_STATE_PAUSED, {"Pause"}},
        Cell{GST_STATE_PLAYING, GST_STATE_PLAYING, {}}),
    NameOf);

TEST_F(NetworkSwitch, TheStepsAreLoggedInOrder) {
    ServeH264();
    ASSERT_TRUE(mElement.Play());
    const DebugCapture lLog("virertsp_source");
    mElement.SetNetwork(false);
    mElement.Set(GST_STATE_NULL);
    mElement.SetNetwork(true);
    Texts lServer;
    for (const std::string& lText : lLog.All()) {
        if (std::string::npos != lText.find("Server ") || std::string::npos != lText.find("Network")) {
            lServer.push_back(lText);
        }
    }
    EXPECT_EQ((Texts{"DEBUG Network-available: FALSE", "DEBUG Network-available: TRUE",
                     "DEBUG Server playing => paused", "DEBUG Server paused => ready", "DEBUG Server ready => null"}),
              lServer);
}

TEST_F(NetworkSwitch, TheSameValueAgainDoesNothing) {
    ServeH264();
    StartPlaying();
    const DebugCapture lLog("virertsp_source");
    mElement.SetNetwork(true);
    EXPECT_TRUE(lLog.All().empty());
    mElement.SetNetwork(false);
    mElement.Set(GST_STATE_PAUSED);
    mElement.SetNetwork(false);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Network-available: FALSE"));
    // The state of the first loss counts.
    mElement.SetNetwork(true);
    EXPECT_EQ(Texts{"Pause"}, mServer.TakeCalls());
}

TEST_F(NetworkSwitch, AfterALossPlayingSeeksToTheResumePositionOnce) {
    ServeH264();
    StartPlaying();
    mServer.Push(0, 8 * kSecond, "x");
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    mElement.SetNetwork(false);
    mElement.Set(GST_STATE_PAUSED);
    mElement.SetNetwork(true);
    EXPECT_EQ(Texts{"Pause"}, mServer.TakeCalls());
    mServer.Push(0, 8 * kSecond, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Seek 8.000000"}, mServer.TakeCalls());
    mElement.Set(GST_STATE_PAUSED);
    mServer.Push(0, 9 * kSecond, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ((Texts{"Pause", "Resume"}), mServer.TakeCalls());
}

TEST_F(NetworkSwitch, ALossWhilePausedMakesPlayingSeekAsWell) {
    ServeH264();
    StartPlaying();
    mServer.Push(0, 8 * kSecond, "x");
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    mElement.Set(GST_STATE_PAUSED);
    mElement.SetNetwork(false);
    mElement.SetNetwork(true);
    mServer.TakeCalls();
    mServer.Push(0, 8 * kSecond, "x");
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_EQ(Texts{"Seek 8.000000"}, mServer.TakeCalls());
}

TEST_F(NetworkSwitch, ALivePresentationIsPlayedAgainAfterALoss) {
    ServeH264(0);
    StartPlaying();
    mElement.Set(GST_STATE_PAUSED);
    mElement.SetNetwork(false);
    mElement.Force(GST_STATE_PLAYING);
    mServer.TakeCalls();
    mElement.SetNetwork(true);
    EXPECT_EQ(Texts{"Play rtsp://host/clip 0.000000"}, mServer.TakeCalls());
    mElement.Force(GST_STATE_PAUSED);
}

TEST_F(NetworkSwitch, AServerThatWasNotPausedIsLeftAlone) {
    ServeH264();
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    mElement.SetNetwork(false);
    mElement.Force(GST_STATE_PLAYING);
    mServer.TakeCalls();
    mElement.SetNetwork(true);
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    mElement.Force(GST_STATE_PAUSED);
}

TEST_F(NetworkSwitch, FailuresWhileCatchingUpAreToldAndStopNothing) {
    ServeH264();
    ASSERT_TRUE(mElement.Play());
    mElement.SetNetwork(false);
    mElement.Set(GST_STATE_NULL);
    mServer.TakeCalls();
    mServer.On("Pause", Throws<Player::NetworkErr>(38));
    mServer.On("Close", Throws<Player::NetworkErr>(35));
    mElement.SetNetwork(true);
    EXPECT_EQ((Texts{"Pause", "Close"}), mServer.TakeCalls());
    EXPECT_EQ((Texts{"error 196646", "error 196643"}), mElement.TakeMessages({"error"}));
}

TEST_F(NetworkSwitch, ALossDoesNotWaitForTheServer) {
    ServeH264();
    mServer.Block("Play");
    std::thread lPreroll([this] { Preroll(); });
    ASSERT_TRUE(mServer.AwaitBlocked());
    mElement.SetNetwork(false);  // hangs here otherwise until the server lets go
    mServer.Release();
    lPreroll.join();
}

}  // namespace ElementTest
