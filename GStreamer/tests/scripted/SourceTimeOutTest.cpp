#include <chrono>
#include <thread>

#include "support/DebugCapture.hpp"
#include "support/FakeServer.hpp"
#include "support/SourceTest.hpp"

namespace ElementTest {
namespace {

using std::chrono::milliseconds;

const char* const kTimedOut = "error 33043";

/// Media that stops coming, with a library whose patience is a second.
class SourceTimeOutTestSlow : public SourceTest {
protected:
    /// A new element, whose player is made with the shorter time-outs; so are those that replace it.
    void Shorten() {
        TimeOutAfter(1);
        mElement = std::make_unique<ElementUnderTest>();
    }
};

TEST_F(SourceTimeOutTestSlow, IsToldAndThePlayerIsMadeAnew) {
    Shorten();
    const DebugCapture lLog("virertsp_source");
    Start(std::string(kClip) + R"(
        // Neither paused nor torn down: the connection goes with its player.
        END
        ACCEPT
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video range=0-20
        > SETUP clip/video 2 | UDP 1
        < 200 2 | Session: 5 | UDP 1
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-20
        VIDEO1 1 0.0 0.5
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PLAYING);
    ASSERT_TRUE(Element().AwaitMessage(kTimedOut));
    std::this_thread::sleep_for(milliseconds(400));
    EXPECT_EQ(1U, Element().CountMessages(kTimedOut));
    EXPECT_EQ(0U, Element().CountMessages("other error"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "got kTimedOut from track 0"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Timed out"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Send buffer event: 33043"));
    EXPECT_EQ(0U, Element().Sink(0)->Count("eos"));
    EXPECT_EQ(1U, Messages({"warning"}).size());

    To(GST_STATE_PAUSED);
    EXPECT_NE(nullptr, Element().Sink(0));
    EXPECT_EQ(0U, Element().Sink(0)->Count("flush-start"));
    To(GST_STATE_READY);
    EXPECT_EQ(nullptr, Element().Sink(0)) << "the streams go with the player";
    To(GST_STATE_PLAYING);
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
}

TEST_F(SourceTimeOutTestSlow, AServerThatNeverSendsIsNotWaitedForAnyLonger) {
    Shorten();
    std::string lSilent = kClip;
    lSilent.erase(lSilent.find("VIDEO 1"));
    Start(lSilent + "END", GST_STATE_PLAYING);
    EXPECT_TRUE(Element().AwaitMessage(kTimedOut));
    To(GST_STATE_READY);
}

TEST_F(SourceTimeOutTestSlow, AServerThatNeverAnswersFailsTheStart) {
    Shorten();
    SetLocation(Serve("> DESCRIBE clip 1\nEND").URL());
    To(GST_STATE_READY);
    EXPECT_EQ(GST_STATE_CHANGE_FAILURE, Element().Set(GST_STATE_PAUSED));
    EXPECT_EQ(1U, Messages({"error"}).size());
}

TEST_F(SourceTimeOutTestSlow, TwoTracksTimeOutTogether) {
    Shorten();
    Start(std::string(kTwoTracks) + "END", GST_STATE_PLAYING);
    ASSERT_TRUE(Element().AwaitMessage(kTimedOut));
    std::this_thread::sleep_for(milliseconds(400));
    const std::size_t lTold = Element().CountMessages(kTimedOut);
    EXPECT_TRUE(1 == lTold || 2 == lTold) << lTold << " from two tracks";
    EXPECT_EQ(1U, Messages({"warning"}).size());
    To(GST_STATE_READY);
}

TEST_F(SourceTimeOutTestSlow, OneOfTwoTracksIsNoTimeOutOfTheNetwork) {
    Shorten();
    Start(std::string(kTwoTracks) + "PAUSE\nTEARDOWN", GST_STATE_PLAYING);
    const DebugCapture lLog("virertsp_source");
    for (std::uint8_t lSeq = 3; lSeq < 20; ++lSeq) {
        std::this_thread::sleep_for(milliseconds(100));
        mServers[0]->Media(1).SendRtp({0x80, 0xe1, 0, lSeq, 0, 2, 0, lSeq, 0, 0, 0, 7, 1, 0xcc});
    }
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "got kTimedOut from track 0"));
    EXPECT_EQ(0U, Element().CountMessages(kTimedOut));
}

/// Two tracks of a made-up session that time out together, again and again; the application reacts at once.
class SourceTimeOut : public testing::TestWithParam<GstState> {};

TEST_P(SourceTimeOut, TheApplicationGoesDownAtTheFirstMessage) {
    FakeServer lServer;
    lServer.Describe({FakeServer::H264(), FakeServer::AAC()});
    ElementUnderTest lElement;
    for (unsigned lRound = 1; lRound <= 10; ++lRound) {
        lServer.Push(0, 1, "x");
        lServer.Push(1, 1, "y");
        lServer.End(0, "Timeout");
        lServer.End(1, "Timeout");
        ASSERT_TRUE(lElement.Play());
        ASSERT_TRUE(lElement.AwaitMessage(kTimedOut));
        ASSERT_NE(GST_STATE_CHANGE_FAILURE, lElement.Set(GetParam()));
        EXPECT_EQ(1 + lRound, lServer.PlayersMade());
        EXPECT_EQ(1U, lElement.TakeMessages({"warning"}).size());
        EXPECT_EQ(nullptr, lElement.Sink(0));
        EXPECT_EQ(nullptr, lElement.Sink(1));
    }
}

INSTANTIATE_TEST_SUITE_P(States, SourceTimeOut, testing::Values(GST_STATE_READY, GST_STATE_NULL),
                         [](const auto& aInfo) { return std::string(gst_element_state_get_name(aInfo.param)); });

TEST(SourceTimeOutRace, GoingDownWhileTheTracksTimeOut) {
    FakeServer lServer;
    lServer.Describe({FakeServer::H264(), FakeServer::AAC()});
    ElementUnderTest lElement;
    for (unsigned lRound = 0; lRound < 15; ++lRound) {
        lServer.Push(0, 1, "x");
        lServer.Push(1, 1, "y");
        ASSERT_TRUE(lElement.Play());
        lServer.End(0, "Timeout");
        lServer.End(1, "Timeout");
        // Around the moment at which they have looked for a packet and waited.
        std::this_thread::sleep_for(milliseconds(90 + 3 * lRound));
        ASSERT_NE(GST_STATE_CHANGE_FAILURE, lElement.Set(0 == lRound % 2 ? GST_STATE_READY : GST_STATE_NULL));
    }
}

}  // namespace
}  // namespace ElementTest
