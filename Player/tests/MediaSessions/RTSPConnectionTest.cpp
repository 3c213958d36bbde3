// When the control connection is opened, kept and left.
#include <algorithm>

#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/RTSPRequestsFixture.hpp"
#include "support/Throws.hpp"

namespace Player {
namespace {

using Testing::Peer;
using ::testing::StartsWith;
using TestSupport::ScriptedServer;
using TestSupport::Thrown;

// ---------------------------------------------------------------------------- the connection

/// Waits for the server once the description has come, before anything is set up.
class WaitingPlayer : public MediaPlayer {
public:
    explicit WaitingPlayer(ScriptedServer& aServer) : mServer(aServer) {}
    void AvailableRange(const Time& aBegin, const Time& aEnd) override {
        EXPECT_TRUE(mServer.Await("closed"));
        MediaPlayer::AvailableRange(aBegin, aEnd);
    }

private:
    ScriptedServer& mServer;
};

TEST_F(RTSPRequestsTest, AConnectionClosedBetweenRequestsIsReopened) {
    ScriptedServer lServer(Described(kVideo) + "CLOSE\nNOTIFY closed\nACCEPT\nC: SETUP {*}\nC...\n" + OkTo("2") +
                           "S: Session: 12345\nS:\n" + "C: PLAY {*}\nC...\n" + OkTo("3") + kPlayed +
                           "SPLIT\nRESET\nNOTIFY reset\nACCEPT\nC: PAUSE {*}\nC...\n" + OkTo("4") +
                           "S:\nSHUTDOWN\nNOTIFY shut down\nEND\nACCEPT\nC: TEARDOWN {*}\nC...\n" + OkTo("5") +
                           "S:\nEND\n");
    WaitingPlayer lPlayer(lServer);
    lPlayer.Play(lServer.URL(), Time(0));
    EXPECT_TRUE(lServer.Await("reset"));
    lPlayer.Pause();
    EXPECT_TRUE(lServer.Await("shut down"));
    lPlayer.Close();
    EXPECT_EQ("", lServer.Failure());
    const std::vector<std::string> lSteps = mReports.Messages(Severity::Info);
    const std::string lConnecting =
        "Connecting to RTSP server: 127.0.0.1:" + std::to_string(lServer.Port()) + ", Via proxy: None";
    EXPECT_EQ(4, std::count(lSteps.begin(), lSteps.end(), lConnecting));
    EXPECT_TRUE(mReports.Errors().empty());
    // What goes out is told before the connection that it goes over.
    for (auto lStep = lSteps.begin() + 1; lStep != lSteps.end(); ++lStep) {
        if (lConnecting == *lStep) { EXPECT_THAT(*(lStep - 1), testing::StartsWith("Sending RTSP ")); }
    }
}

TEST_F(RTSPRequestsTest, TheLocalIPIsBoundTo) {
    ScriptedServer lServer(kToTheRange);
    mPlayer.SetConfigParam("RTSP:UseLocalIP", "127.0.0.3");
    mPlayer.Play(lServer.URL(), Time(0));
    mPlayer.Close();
    EXPECT_EQ("", lServer.Failure());

    mPlayer.SetConfigParam("RTSP:UseLocalIP", "192.0.2.1");
    EXPECT_THAT(Thrown([&] { mPlayer.Play(lServer.URL(), Time(0)); }), StartsWith("3/34 "));
}

TEST_F(RTSPRequestsTest, AServerThatRefusesIsAFailureAndMayBePlayedLater) {
    const int lDeaf = Peer::Bound();
    const std::string lURL = "rtsp://127.0.0.1:" + std::to_string(Peer::PortOf(lDeaf)) + "/clip";
    EXPECT_THAT(Thrown([&] { mPlayer.Play(lURL, Time(0)); }), StartsWith("3/35 Socket::Connect(): "));
    EXPECT_THAT(Thrown([&] { mPlayer.Play(lURL, Time(0)); }), StartsWith("3/35 Socket::Connect(): "));
    close(lDeaf);
    ScriptedServer lServer(kToTheRange);
    mPlayer.Play(lServer.URL(), Time(0));
    mPlayer.Close();
    EXPECT_EQ("", lServer.Failure());
}

TEST_F(RTSPRequestsTest, AServerThatSaysNothingRunsIntoTheTimeOut) {
    ScriptedServer lServer(Describe("1") + "C:\nEND\nACCEPT\n" + Describe("2") + "C:\n" + OkTo("2") +
                           Description(kVideo) + "C: SETUP {*}\nC...\n" + OkTo("3") + "S: Session: 12345\nS:\n" +
                           "C: PLAY {*}\nC...\n" + OkTo("4") + kPlayed);
    mPlayer.SetConfigParam("RTSP:TimeOutAfter", "1");
    // The element's spelling has no effect.
    mPlayer.SetConfigParam("RTSP:TimeoutAfter", "60");
    const auto lBegin = std::chrono::steady_clock::now();
    EXPECT_THAT(Thrown([&] { mPlayer.Play(lServer.URL(), Time(0)); }),
                StartsWith("3/38 RTSP::FillBuf(): Failed to read from RTSP socket ["));
    const auto lTook = std::chrono::steady_clock::now() - lBegin;
    EXPECT_GE(lTook, std::chrono::milliseconds(990));
    EXPECT_LT(lTook, std::chrono::seconds(20));
    mPlayer.Play(lServer.URL(), Time(0));
    EXPECT_EQ(1U, mPlayer.GetTrackCount());
    EXPECT_EQ("", lServer.Failure());
}

// The number goes on, over a new connection: the answer that was awaited might still come over the old one.
TEST_F(RTSPRequestsTest, AWrongNumberIsLeftBehindWithItsConnection) {
    ScriptedServer lServer(Describe("1") + "C:\n" + OkTo("7") + Description(kVideo) + "END\nACCEPT\n" + Describe("2") +
                           "C:\n" + "S: RTSP/1.0 200 OK\n" + Description(kVideo) + "END\nACCEPT\n" + Describe("3") +
                           "C:\n" + "S: RTSP/1.0 200 OK\nS: cseq:   3\n" + Description(kVideo) +
                           "C: SETUP {*}\nC...\n" + OkTo("4") + "S: Session: 12345\nS:\n" + "C: PLAY {*}\nC...\n" +
                           OkTo("5") + kPlayed);
    EXPECT_EQ("17/2 RTSP::RecvResponse(): Invalid response: CSeq mismatch",
              Thrown([&] { mPlayer.Play(lServer.URL(), Time(0)); }));
    EXPECT_EQ("17/2 RTSP::RecvResponse(): Invalid response: CSeq missing",
              Thrown([&] { mPlayer.Play(lServer.URL(), Time(0)); }));
    mPlayer.Play(lServer.URL(), Time(0));
    EXPECT_EQ(1U, mPlayer.GetTrackCount());
    EXPECT_EQ("", lServer.Failure());
}

TEST_F(RTSPRequestsTest, ABodyCutShortIsLeftBehindWithItsConnection) {
    // What is missing of the body would be read in front of the next response.
    ScriptedServer lServer(
        Describe("1") + "C:\n" + OkTo("1") +
        "S: Content-Length: 500\nS:\nS| v=0\nS| s=half\nSPLIT\nS| m=video 0 RTP/AVP 96\nEND\nACCEPT\n" + Describe("2") +
        "C:\n" + OkTo("2") + Description(kVideo) + "C: SETUP {*}\nC...\n" + OkTo("3") + "S: Session: 12345\nS:\n" +
        "C: PLAY {*}\nC...\n" + OkTo("4") + kPlayed);
    EXPECT_EQ("17/2 RTSP::RecvResponse(): Invalid response: Bad Content-Length",
              Thrown([&] { mPlayer.Play(lServer.URL(), Time(0)); }));
    mPlayer.Play(lServer.URL(), Time(0));
    EXPECT_EQ(1U, mPlayer.GetTrackCount());
    EXPECT_EQ("", lServer.Failure());
}

}  // namespace
}  // namespace Player
