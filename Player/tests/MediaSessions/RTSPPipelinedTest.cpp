#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;

const char* const kPipelinedRequests = R"(
    > DESCRIBE clip 1
    < 200 1 | Supported: 3gpp-foo, 3gpp-pipelined | SDP clip/ video audio range=0-20
    > SETUP clip/video 2 | Pipelined-Requests: 00000001 | UDP 0
    > SETUP clip/audio 3 | Require: 3gpp-pipelined | Pipelined-Requests: 00000001 | UDP 1
    > PLAY clip 4 | Require: 3gpp-pipelined | Pipelined-Requests: 00000001 | Range: npt=0.000000-
)";
const char* const kInfo = " | RTP-Info: url=r/video;seq=1;rtptime=0,url=r/audio;seq=1;rtptime=0 | Range: npt=2-\n";
const char* const kSecondPlay = R"(
    > DESCRIBE clip 6
    < 200 6 | SDP clip/ video
    > SETUP clip/video 7 | Pipelined-Requests: 00000002 | UDP *
    > PLAY clip 8 | Require: 3gpp-pipelined | Pipelined-Requests: 00000002 | Range: npt=0.000000-
    < 200 7 | Session: 6
    < 200 8 | RTP-Info: url=r/video
)";

class RTSPPipelinedTest : public SessionTest {
protected:
    void ExpectPipelinedFailure() {
        ExpectThrows<RTSPErr>(19, "RTSP::DoPlay(): One or more pipelined SETUP requests failed", [this] { Play(); });
        EXPECT_THAT(States(), ElementsAre());
    }
};

TEST_F(RTSPPipelinedTest, AllRequestsAreSentBeforeAnAnswerIsRead) {
    Serve(kPipelinedRequests + std::string(R"(
        < 200 2 | Session: 5 | UDP 0
        < 200 3 | Session: 5 | UDP 1
        < 200 4)") +
          kInfo);
    mHandler.Play(URL(), Time(0));
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("SelectTracks video audio", "AvailableRange 0 20", "AcceptTrack video", "AcceptTrack audio",
                            "video: Flush", "audio: Flush", "PlayingRange 2 20", "video: State=WaitData",
                            "audio: State=WaitData"));
    // The way for the media is opened when all set-ups are answered, once, to the ports of their answers.
    const auto lPunching = [this](unsigned aTrack, unsigned aOffset) {
        return "Punching a hole to IP: 127.0.0.1, Port: " + std::to_string(mServer->Media(aTrack).RtpPort() + aOffset);
    };
    const auto lReports = mReports.Messages(Severity::Info);
    ASSERT_EQ(15U, lReports.size());
    EXPECT_THAT(std::vector<std::string>(lReports.begin() + 4, lReports.end()),
                ElementsAre("Sending RTSP SETUP for URL: " + URL("clip/video"),
                            "Sending RTSP SETUP for URL: " + URL("clip/audio"), "Sending RTSP PLAY for URL: " + URL(),
                            "Got RTSP response: 200 OK", "Got RTSP response: 200 OK", lPunching(0, 0), lPunching(0, 1),
                            lPunching(1, 0), lPunching(1, 1), "Got RTSP response: 200 OK", "RTSP: State -> WaitData"));
}

TEST_F(RTSPPipelinedTest, ARefusedSetupEndsWhatIsPlayed) {
    Serve(kPipelinedRequests + std::string(R"(
        < 200 2 | Session: 5 | UDP 0
        < 461 3
        < 200 4)") +
          kInfo + R"(
        > TEARDOWN clip 5 | Session: 5
        < 200 5
    )" + kSecondPlay);
    ExpectPipelinedFailure();
    EXPECT_EQ(1U, mReports.Count(Severity::Error, "RTSP::DoPlay(): Pipelined SETUP failed: 461 Unsupported Transport"));
    Play();
    EXPECT_EQ(1U, mPlayer.GetTrackCount());
    EXPECT_THAT(States(), ElementsAre("WaitData"));
}

TEST_F(RTSPPipelinedTest, ARefusalOfUDPLeadsToTCP) {
    for (const char* lFirst : {"< 200 2 | Session: 5 | UDP 0", "< 461 2"}) {
        const bool lHasSession = std::string::npos != std::string(lFirst).find("Session");
        const unsigned lNext = lHasSession ? 6 : 5;
        const auto lNumbered = [lNext](const std::string& aBegin, unsigned aStep, const std::string& aEnd) {
            return aBegin + std::to_string(lNext + aStep) + aEnd + "\n";
        };
        Serve(kPipelinedRequests + std::string(lFirst) + "\n< 461 3\n< 454 4\n" +
              (lHasSession ? "> TEARDOWN clip 5 | Session: 5\n< 200 5\n" : "") +
              lNumbered("> SETUP clip/video ", 0, " | Pipelined-Requests: 00000002 | TCP 0") +
              lNumbered("> SETUP clip/audio ", 1, " | Require: 3gpp-pipelined | Pipelined-Requests: 00000002 | TCP 1") +
              lNumbered("> PLAY clip ", 2, "") + lNumbered("< 200 ", 0, " | Session: 6 | TCP 0") +
              lNumbered("< 200 ", 1, " | TCP 1") + lNumbered("< 200 ", 2, " | RTP-Info: url=r/video"));
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Transports", "udp,tcp");
        mReports.Clear();
        EXPECT_NO_THROW(lPlayer.Play(URL(), Time(0))) << lFirst;
        EXPECT_EQ("", mServer->Failure()) << lFirst;
        EXPECT_EQ(1U, mReports.Count(Severity::Warning, "No media over UDP, the server refuses UDP: over TCP now"));
        // A port may be taken by another process; nothing else goes wrong.
        for (const std::string& lMessage : mReports.Messages(Severity::Error)) {
            EXPECT_EQ(0U, lMessage.find("Socket::Bind()")) << lMessage;
        }
    }
}

TEST_F(RTSPPipelinedTest, ARefusalForAnotherReasonDoesNot) {
    Serve(kPipelinedRequests + std::string("< 404 2\n< 404 3\n< 454 4\n"));
    mPlayer.SetConfigParam("RTSP:Transports", "udp,tcp");
    EXPECT_THROW(Play(), RTSPErr);
    EXPECT_EQ(2U, mReports.Count(Severity::Error, "Got RTSP response: 404 Not Found"));
}

// The session is still there, as far as is known: it is torn down before the next.
TEST_F(RTSPPipelinedTest, ARefusedSetupIsWhatIsThrownWhateverBecomesOfTheTeardown) {
    Serve(kPipelinedRequests + std::string(R"(
        < 200 2 | Session: 5 | UDP 0
        < 461 3
        < 200 4)") +
          kInfo + R"(
        > TEARDOWN clip 5 | Session: 5
        < 200 9
        END
        ACCEPT
        > TEARDOWN clip 6 | Session: 5
        < 200 6
        > DESCRIBE clip 7
        < 200 7 | SDP clip/ text
    )");
    ExpectPipelinedFailure();
    Play();
}

TEST_F(RTSPPipelinedTest, TheFirstAcceptedSetupNamesTheSession) {
    Serve(kPipelinedRequests + std::string(R"(
        < 404 2
        < 200 3 | Session: 5 | UDP 1
        < 200 4)") +
          kInfo + R"(
        > TEARDOWN clip 5 | Session: 5
        // Refused: the session is still there.
        < 454 5
        > TEARDOWN clip 6 | Session: 5
        < 200 6
        > DESCRIBE clip 7
        < 200 7 | SDP clip/ text
    )");
    ExpectPipelinedFailure();
    Play();
}

TEST_F(RTSPPipelinedTest, WithoutASessionNothingIsTornDown) {
    Serve(kPipelinedRequests + std::string(R"(
        < 404 2
        < 459 3
        < 200 4)") +
          kInfo + R"(
        > SETUP clip/video 5 | Pipelined-Requests: 00000002 | UDP *
        > SETUP clip/audio 6 | Require: 3gpp-pipelined | Pipelined-Requests: 00000002 | UDP *
        > PLAY clip 7 | Require: 3gpp-pipelined | Pipelined-Requests: 00000002 | Range: npt=0.000000-
        < 200 5 | Session: 5
        < 200 6
        < 200 7)" +
          kInfo);
    ExpectPipelinedFailure();
    EXPECT_THAT(Reported("RTSP::DoPlay(): Pipelined SETUP failed: "),
                ElementsAre("404 Not Found", "459 Aggregate Operation Not Allowed"));
    Play();
}

TEST_F(RTSPPipelinedTest, ARefusedPlayIsWhatIsThrown) {
    Serve(kPipelinedRequests + std::string(R"(
        < 404 2
        < 200 3 | Session: 5 | UDP 1
        < 500 4
        > TEARDOWN clip 5 | Session: 5
        < 200 5
    )") + kSecondPlay);
    ExpectThrows<RTSPErr>(0x500, "RTSP::DoPlay(): Pipelined PLAY failed: 500 Internal Server Error",
                          [this] { Play(); });
    EXPECT_EQ(1U, mReports.Count(Severity::Error, "RTSP::DoPlay(): Pipelined SETUP failed: 404 Not Found"));
    Play();
}

TEST_F(RTSPPipelinedTest, AnswersThatNobodyAwaitsAreNotTakenForLaterOnes) {
    Serve(kPipelinedRequests + std::string(R"(
        < 200 2 | UDP 0
        < 200 3 | Session: 5 | UDP 1
        < 200 4)") +
          kInfo + R"(
        END
        ACCEPT
        > SETUP clip/video 5 | Pipelined-Requests: 00000002 | UDP *
        > SETUP clip/audio 6 | Require: 3gpp-pipelined | Pipelined-Requests: 00000002 | UDP *
        > PLAY clip 7 | Require: 3gpp-pipelined | Pipelined-Requests: 00000002 | Range: npt=0.000000-
        < 200 5 | Session: 6
        < 200 6
        < 200 7)" +
          kInfo);
    ExpectThrows<RTSPErr>(2, "RTSP::RecvSetup(): Invalid SETUP response: Session missing", [this] { Play(); });
    Play();
    EXPECT_THAT(States(), ElementsAre("WaitData"));
}

TEST_F(RTSPPipelinedTest, WhenPortsRunOutTheConnectionStartsAnew) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-pipelined | SDP clip/ video audio
        > SETUP clip/video 2
        END
        ACCEPT
        > SETUP clip/video 3
        > SETUP clip/audio 4
        > PLAY clip 5
        < 200 3 | Session: 5
        < 200 4
        < 200 5 | RTP-Info: url=r/video
    )");
    // One pair is all that there is for two tracks.
    const unsigned lPort = mServer->Media(1).RtpPort();
    mPlayer.SetConfigParam("RTSP:UseUDPPortsFrom", std::to_string(lPort));
    mPlayer.SetConfigParam("RTSP:UseUDPPortsTo", std::to_string(lPort + 2));
    mPlayer.SetConfigParam("RTSP:UseLocalIP", "127.0.0.2");
    ExpectThrows<RTPErr>(1, "OverUDP::Track(): Failed to create UDP port pair", [this] { Play(); });
    EXPECT_EQ(2U, mPlayer.GetTrackCount()) << "of which one has no ports";
    EXPECT_EQ(0U, mPlayer.GetTrackReception(1).mPacketsReceived);
    mPlayer.SetConfigParam("RTSP:UseUDPPortsTo", "");
    mPlayer.SetConfigParam("RTSP:UseUDPPortsFrom", "");
    Play();
    EXPECT_THAT(States(), ElementsAre("WaitData"));
}

}  // namespace
}  // namespace Player::MediaSessions
