#include <chrono>
#include <thread>

#include "Player/Exception.hpp"
#include "support/DebugCapture.hpp"
#include "support/FakeServer.hpp"
#include "support/SourceTest.hpp"

namespace ElementTest {
namespace {

constexpr GstState N = GST_STATE_NULL;
constexpr GstState R = GST_STATE_READY;
constexpr GstState P = GST_STATE_PAUSED;
constexpr GstState L = GST_STATE_PLAYING;

const char* const kWarning = "Unexpected state transition";

/// A state that the element does not come to by itself while the network is lost.
void Force(GstElement* aElement, GstState aState) {
    GST_OBJECT_LOCK(aElement);
    GST_STATE(aElement) = aState;
    GST_OBJECT_UNLOCK(aElement);
}

/// An element whose sessions are made up, and tell what is asked of them.
class SourceNetwork : public testing::Test {
protected:
    SourceNetwork() {
        mServer.Describe({FakeServer::H264()});
        mServer.Range(0, 20);
        mServer.Push(0, 0, "x");
        mElement.SetText("location", "rtsp://host/clip");
    }
    void To(GstState aState) {
        GstState lState = mElement.State();
        while (lState != aState) {
            lState = static_cast<GstState>(lState < aState ? lState + 1 : lState - 1);
            ASSERT_NE(GST_STATE_CHANGE_FAILURE, mElement.Set(lState));
        }
    }

    FakeServer mServer;
    ElementUnderTest mElement;
};

struct Cell {
    GstState mAtLoss;
    GstState mNow;
    std::vector<std::string> mCalls;
    std::size_t mWarnings;
};

void PrintTo(const Cell& aCell, std::ostream* aOut) {
    *aOut << gst_element_state_get_name(aCell.mAtLoss) << " to " << gst_element_state_get_name(aCell.mNow);
}

class SourceNetworkTable : public SourceNetwork, public testing::WithParamInterface<Cell> {};

TEST_P(SourceNetworkTable, BringsTheServerAfterTheElement) {
    const Cell& lCell = GetParam();
    To(lCell.mAtLoss);
    const DebugCapture lLog("virertsp_source");
    mElement.SetNetwork(false);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Network-available: FALSE"));
    mServer.TakeCalls();
    if (lCell.mNow < lCell.mAtLoss) {
        To(lCell.mNow);
    } else {
        Force(mElement.Get(), lCell.mNow);
    }
    EXPECT_THAT(mServer.TakeCalls(), IsEmpty()) << "the server is left alone";
    mElement.SetNetwork(true);
    EXPECT_EQ(lCell.mCalls, mServer.TakeCalls());
    EXPECT_EQ(lCell.mWarnings, lLog.Count(GST_LEVEL_WARNING, kWarning));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Network-available: TRUE"));
    if (lCell.mNow > lCell.mAtLoss) { Force(mElement.Get(), lCell.mAtLoss); }
}

INSTANTIATE_TEST_SUITE_P(Cells, SourceNetworkTable,
                         testing::Values(Cell{N, N, {}, 0}, Cell{N, R, {}, 1}, Cell{N, P, {}, 1}, Cell{N, L, {}, 1},
                                         Cell{R, N, {"Close"}, 0}, Cell{R, R, {}, 0}, Cell{R, P, {}, 1},
                                         Cell{R, L, {}, 1}, Cell{P, N, {"Close"}, 0}, Cell{P, R, {}, 0},
                                         Cell{P, P, {}, 0}, Cell{P, L, {}, 0}, Cell{L, N, {"Pause", "Close"}, 0},
                                         Cell{L, R, {"Pause"}, 0}, Cell{L, P, {"Pause"}, 0}, Cell{L, L, {}, 0}));

TEST_F(SourceNetwork, AValueThatDoesNotChangeDoesNothing) {
    To(L);
    const DebugCapture lLog("virertsp_source");
    mElement.SetNetwork(true);
    mElement.SetNetwork(false);
    To(P);
    // Still what was at the first loss.
    mElement.SetNetwork(false);
    mServer.TakeCalls();
    mElement.SetNetwork(true);
    EXPECT_THAT(mServer.TakeCalls(), ElementsAre("Pause"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Network-available: FALSE"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Network-available: TRUE"));
}

/// PAUSED when the network went, PLAYING when it returns: the server is resumed if it was paused.
class SourceNetworkResume : public SourceNetwork {
protected:
    std::vector<std::string> CallsOfReturn() {
        mElement.SetNetwork(false);
        Force(mElement.Get(), L);
        mServer.TakeCalls();
        mElement.SetNetwork(true);
        Force(mElement.Get(), P);
        return mServer.TakeCalls();
    }
};

TEST_F(SourceNetworkResume, ALiveStreamIsPlayedFromZero) {
    mServer.Range(0, 0);
    To(L);
    To(P);
    EXPECT_THAT(CallsOfReturn(), ElementsAre("Play rtsp://host/clip 0.000000"));
}

TEST_F(SourceNetworkResume, ARecordedOneSeeksToWhereItWas) {
    mServer.Latest(0, 1500000000);
    mServer.Push(0, 1500000000, "y");
    To(L);
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer", 2));
    To(P);
    EXPECT_THAT(CallsOfReturn(), ElementsAre("Seek 1.500000"));
    // The position is used up.
    EXPECT_THAT(CallsOfReturn(), ElementsAre("Resume"));
}

TEST_F(SourceNetworkResume, WithoutAPositionItResumes) {
    To(P);
    // What the seek asked for is used up by the first return; the server stays marked as paused.
    To(L);
    To(P);
    CallsOfReturn();
    EXPECT_THAT(CallsOfReturn(), ElementsAre("Resume"));
}

TEST_F(SourceNetworkResume, AFailureIsToldAndGoesNoFurther) {
    To(L);
    To(P);
    mServer.On("Seek", Throws<Player::RTSPErr>(0x455));
    CallsOfReturn();
    EXPECT_EQ(1U, mElement.CountMessages("error " + std::to_string(0x00110455)));
}

TEST_F(SourceNetwork, LosingTheNetworkWaitsForNothing) {
    To(R);
    mServer.Block("Play");
    std::thread lTransition([this] { mElement.Set(P); });
    EXPECT_TRUE(mServer.AwaitBlocked());
    const auto lBegin = std::chrono::steady_clock::now();
    mElement.SetNetwork(false);
    EXPECT_LT(std::chrono::steady_clock::now() - lBegin, std::chrono::seconds(5));
    mServer.Release();
    lTransition.join();
}

TEST_F(SourceTest, TheNetworkLostWhilePlayingAndBackInNull) {
    Start(std::string(kClip) + R"(
        AWAIT back
        > PAUSE clip 4 | Session: 5
        < 200 4
        > TEARDOWN clip 5 | Session: 5
        < 200 5
        END
    )",
          GST_STATE_PLAYING);
    Element().SetNetwork(false);
    To(GST_STATE_NULL);
    mServers[0]->Notify("back");
    Element().SetNetwork(true);
    EXPECT_THAT(Messages({"error"}), IsEmpty());
}

}  // namespace
}  // namespace ElementTest
