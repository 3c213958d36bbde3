// The modern profile: dialogues with servers that the classic one does not play.

#include <atomic>
#include <thread>

#include "Crypto/Crypto.hpp"
#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;

class RTSPModernTest : public SessionTest {
protected:
    void SetUp() override {
        Interleave();
        SetModern();
    }
    void SetModern() {
        mPlayer.SetConfigParam("RTSP:Profile", "modern");
        mHandler.SetConfigParam("RTSP:Profile", "modern");
    }
};

/// A response to DESCRIBE with one video track.
std::string Described(unsigned aCSeq, const std::string& aHeaders, const std::string& aControl,
                      const std::string& aSessionLines = "") {
    return "S: RTSP/1.0 200 OK\nS: CSeq: " + std::to_string(aCSeq) + "\n" + aHeaders +
           "S: Content-Length: {length}\nS:\nS| v=0\n" + aSessionLines +
           "S| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 H264/90000\nS| a=control:" + aControl + "\n";
}

/// Without a slash: tracks are beside it.
const char* const kBase = "S: Content-Base: rtsp://127.0.0.1:{port}/clip\n";

/// A start at these URLs.
std::string Start(const std::string& aDescribed, const std::string& aSetup, const std::string& aPlay) {
    return "> DESCRIBE clip 1\n" + aDescribed + "C: SETUP " + aSetup +
           " RTSP/1.0\nC...\n< 200 2 | Session: 5 | TCP 0\nC: PLAY " + aPlay + " RTSP/1.0\nC...\n< 200 3\n";
}

TEST_F(RTSPModernTest, ControlAttributesAreResolved) {
    const std::string lHost = "rtsp://127.0.0.1:{port}";
    const std::string lBase = "S: Content-Base: " + lHost;
    struct Case {
        std::string mDescribed;
        std::string mSetup;
        std::string mPlay;
    };
    for (const Case& lCase : {
             // A whole URL.
             Case{Described(1, lBase + "/clip/\n", lHost + "/clip/trackID=1"), lHost + "/clip/trackID=1",
                  lHost + "/clip/"},
             // A camera's channel in the query.
             Case{Described(1, lBase + "/cam?channel=1&subtype=0/\n", "trackID=0"),
                  lHost + "/cam?channel=1&subtype=0/trackID=0", lHost + "/cam?channel=1&subtype=0/"},
             // The session has a control attribute of its own.
             Case{Described(1, lBase + "/clip/\n", "1", "S| a=control:*\n"), lHost + "/clip/1", lHost + "/clip/"},
             Case{Described(1, lBase + "/clip/\n", "1", "S| a=control:" + lHost + "/all\n"), lHost + "/clip/1",
                  lHost + "/all"},
             // Content-Base goes before Content-Location, and needs no scheme.
             Case{Described(1, "S: Content-Location: " + lHost + "/other/\n" + lBase + "/clip/\n", "1"),
                  lHost + "/clip/1", lHost + "/clip/"},
             Case{Described(1, "S: Content-Base: 127.0.0.1:{port}/clip/\n", "1"), lHost + "/clip/1", lHost + "/clip/"},
             // No base at all: the track is below what was asked for.
             Case{Described(1, "", "1"), lHost + "/clip/1", lHost + "/clip"},
             Case{Described(1, "", "/1"), lHost + "/1", lHost + "/clip"},
             Case{Described(1, "", lHost + "/1"), lHost + "/1", lHost + "/clip"},
             // A base that is named is a base.
             Case{Described(1, lBase + "/clip\n", "1"), lHost + "/1", lHost + "/clip"},
             Case{Described(1, "S: Content-Location: " + lHost + "/clip\n", "1"), lHost + "/1", lHost + "/clip"},
             // The only track is the presentation.
             Case{Described(1, "", "*"), lHost + "/clip", lHost + "/clip"},
         }) {
        Serve(Start(lCase.mDescribed, lCase.mSetup, lCase.mPlay));
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        EXPECT_NO_THROW(lPlayer.Play(URL(), Time(0))) << lCase.mSetup;
        EXPECT_EQ("", mServer->Failure()) << lCase.mSetup;
    }
}

TEST_F(RTSPModernTest, ARefusedURLIsTriedOnceMoreWithASlash) {
    for (const char* lStatus : {"400 Bad Request", "404 Not Found", "451 Parameter", "455 Method", "503 Busy"}) {
        Serve("> DESCRIBE clip 1\n" + Described(1, kBase, "trackID=1") + "> SETUP trackID=1 2\nS: RTSP/1.0 " + lStatus +
              "\nS: CSeq: 2\nS:\n" + R"(
            > SETUP clip/trackID=1 3
            < 200 3 | Session: 5 | TCP 0
            > PLAY clip 4
            < 200 4
        )");
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        EXPECT_NO_THROW(lPlayer.Play(URL(), Time(0))) << lStatus;
        EXPECT_EQ("", mServer->Failure()) << lStatus;
    }
}

TEST_F(RTSPModernTest, WithoutABaseTheSlashComesFirst) {
    struct Case {
        const char* mPath;
        const char* mFirst;
        const char* mSecond;
    };
    for (const Case& lCase : {
             Case{"live/clip", "live/clip/trackID=1", "live/trackID=1"},
             Case{"live/clip?a=1", "live/clip?a=1/trackID=1", "live/trackID=1?a=1"},
         }) {
        const std::string lPath = lCase.mPath;
        Serve("> DESCRIBE " + lPath + " 1\n" + Described(1, "", "trackID=1") + "> SETUP " + lCase.mFirst +
              " 2\n< 404 2\n> SETUP " + lCase.mSecond + " 3\n< 200 3 | Session: 5 | TCP 0\n> PLAY " + lPath +
              " 4\n< 200 4\n");
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        EXPECT_NO_THROW(lPlayer.Play(URL(lPath), Time(0))) << lPath;
        EXPECT_EQ("", mServer->Failure()) << lPath;
    }
}

TEST_F(RTSPModernTest, AURLThatIsRefusedTwiceOrForAnotherReasonIsAFailure) {
    Serve("> DESCRIBE clip 1\n" + Described(1, kBase, "trackID=1") + R"(
        > SETUP trackID=1 2
        < 404 2
        > SETUP clip/trackID=1 3
        < 404 3
    )");
    ExpectThrows<RTSPErr>(0x404, "RTSP::DoPlay(): SETUP failed: 404 Not Found", [this] { Play(); });
    EXPECT_EQ("", mServer->Failure());
    Serve("> DESCRIBE clip 1\n" + Described(1, kBase, "trackID=1") + "> SETUP trackID=1 2\n< 500 2\n");
    EXPECT_THROW(Play(), RTSPErr);
}

std::string Redirection(unsigned aCSeq, const char* aStatus, const std::string& aLocation) {
    return std::string("S: RTSP/1.0 ") + aStatus + " Moved\nS: CSeq: " + std::to_string(aCSeq) +
           "\nS: Location: " + aLocation + "\nS:\n";
}

TEST_F(RTSPModernTest, RedirectionsAreFollowed) {
    for (const char* lStatus : {"301", "302", "303", "307", "308"}) {
        Serve("> DESCRIBE clip 1\n" + Redirection(1, lStatus, "rtsp://127.0.0.1:{port}/live/1") +
              "> DESCRIBE live/1 2\n" + Redirection(2, lStatus, "2") + "> DESCRIBE live/2 3\n< 404 3\n");
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        EXPECT_THROW(lPlayer.Play(URL(), Time(0)), RTSPErr);
        EXPECT_EQ("", mServer->Failure()) << lStatus;
    }
}

TEST_F(RTSPModernTest, RedirectionsWithoutEndComeToOne) {
    std::string lScript;
    for (unsigned lCSeq = 1; lCSeq <= 6; ++lCSeq) {
        lScript += "> DESCRIBE clip " + std::to_string(lCSeq) + "\n" + Redirection(lCSeq, "302", "/clip");
    }
    Serve(lScript);
    ExpectThrows<RTSPErr>(0x302, "RTSP::DoDescribe(): DESCRIBE failed: 302 Moved", [this] { Play(); });
}

TEST_F(RTSPModernTest, RedirectionsToNowhereAreRefusals) {
    for (const char* lLocation : {"", " ", "http://127.0.0.1/clip", "rtsp://", "rtsp:///clip"}) {
        Serve("> DESCRIBE clip 1\n" + Redirection(1, "302", lLocation));
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        EXPECT_THROW(lPlayer.Play(URL(), Time(0)), RTSPErr) << lLocation;
        EXPECT_EQ("", mServer->Failure()) << lLocation;
    }
}

TEST_F(RTSPModernTest, ClassicFollowsNoRedirection) {
    mPlayer.SetConfigParam("RTSP:Profile", "");
    Serve("> DESCRIBE clip 1\n" + Redirection(1, "302", "rtsp://127.0.0.1:{port}/live"));
    ExpectThrows<RTSPErr>(0x302, "RTSP::DoDescribe(): DESCRIBE failed: 302 Moved", [this] { Play(); });
}

TEST_F(RTSPModernTest, CredentialsStayWithTheirHost) {
    if (!Crypto::IsAvailable()) { GTEST_SKIP() << "built without GnuTLS"; }
    // The same machine by another name is another host.
    Serve(R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: Basic realm="cam"
        S:
        > DESCRIBE clip 2
        S: RTSP/1.0 302 Moved
        S: CSeq: 2
        S: Location: rtsp://localhost:{other}/clip
        S:
    )");
    TestSupport::ScriptedServer lElsewhere(Dialogue(R"(
        C: DESCRIBE rtsp://localhost:{port}/clip RTSP/1.0
        C: CSeq: 3
        C: User-Agent: {*}
        C: Supported: {*}
        C: Accept: {*}
        C:
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 3
        S: WWW-Authenticate: Basic realm="cam"
        S:
    )"));
    mServer->Set("other", std::to_string(lElsewhere.Port()));
    mPlayer.SetConfigParam("RTSP:UserName", "me");
    mPlayer.SetConfigParam("RTSP:Password", "secret");
    EXPECT_THROW(Play(), RTSPErr);
    EXPECT_EQ("", lElsewhere.Failure());
}

TEST_F(RTSPModernTest, NamesHaveNoCaseAndThePlayablePayloadTypeIsTaken) {
    Serve(R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 200 OK
        S: CSeq: 1
        S: Content-Length: {length}
        S:
        S| v=0
        S| m=video 0 RTP/AVP 98 96
        S| a=rtpmap:96 h264/90000
        S| a=fmtp:96 Sprop-Parameter-Sets=Z0I=
        S| a=rtpmap:98 VP8/90000
        S| a=control:*
        > SETUP clip 2
        < 404 2
    )");
    EXPECT_THROW(mHandler.Play(URL(), Time(0)), RTSPErr);
    ASSERT_EQ(1U, mHandler.mAccepted.size());
    EXPECT_EQ("H264", mHandler.mAccepted[0]->Get("Format"));
    EXPECT_EQ("96", mHandler.mAccepted[0]->Get("PayloadType"));
    EXPECT_EQ("sprop-parameter-sets=Z0I=", mHandler.mAccepted[0]->Get("FmtParams"));
}

TEST_F(RTSPModernTest, TracksOfOneTypeAreToldApartByTheirURLs) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video@a video@b
        > SETUP clip/a 2
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/b 3
        < 200 3 | Session: 5 | TCP 1
        > PLAY clip/ 4
        < 200 4 | RTP-Info: url=b;seq=2;rtptime=90000,url=rtsp://10.0.0.1/clip/a;seq=1;rtptime=180000
        SPLIT
        S$ 0 {a}
        S$ 0 {more}
        S$ 2 {b}
        NOTIFY sent
    )");
    const auto lPacket = [](unsigned aSeq, unsigned aTimestamp) {
        const TestSupport::RtpPacket lBuilder = TestSupport::RtpPacket().Type(96).Seq(aSeq).Timestamp(aTimestamp);
        return TestSupport::Hex(TestSupport::RtpPacket(lBuilder).Marker().Payload({0x41, 2}).Build());
    };
    mServer->Set("a", lPacket(1, 180000));
    mServer->Set("more", lPacket(2, 270000));
    mServer->Set("b", lPacket(2, 90000 + 45000));
    mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    Play();
    ASSERT_TRUE(mServer->Await("sent"));
    EXPECT_EQ(0, TakeSample(0).Get());
    EXPECT_EQ(Time(1, 2).Get(), TakeSample(1).Get());
}

class RTSPFallOverTest : public SessionTest {
protected:
    void SetUp() override {
        mPlayer.SetConfigParam("RTSP:Transports", "udp,tcp");
        mPlayer.SetConfigParam("RTSP:UDPPatience", "1");
    }
    std::size_t Complaints() const {
        std::size_t lCount = 0;
        for (const Severity lSeverity : {Severity::Warning, Severity::Error}) {
            for (const std::string& lText : mReports.Messages(lSeverity)) {
                // Ports may be taken by another test, and the next ones are tried.
                lCount += 0 == lText.find("Socket::Bind()") ? 0U : 1U;
            }
        }
        return lCount;
    }
};

/// The second half of a start, over TCP.
const std::string kOverTCP = R"(
    > SETUP clip/video 3 | TCP 0
    < 200 3 | Session: 6 | TCP 0
    > PLAY clip 4 | Session: 6 | Range: npt=2.000000-
    < 200 4 | RTP-Info: url=r/video
)";

TEST_F(RTSPFallOverTest, ARefusalOfUDPLeadsToTCP) {
    for (const char* lStatus : {"461", "400", "406", "459"}) {
        Serve("> DESCRIBE clip 1\n< 200 1 | SDP clip/ video\n> SETUP clip/video 2 | UDP 0\nS: RTSP/1.0 " +
              std::string(lStatus) + " No\nS: CSeq: 2\nS:\n" + kOverTCP);
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Transports", "udp,tcp");
        const std::size_t lBefore = Complaints();
        EXPECT_NO_THROW(lPlayer.Play(URL(), Time(2, 1))) << lStatus;
        EXPECT_EQ("", mServer->Failure()) << lStatus;
        EXPECT_EQ(lBefore + 1, Complaints()) << lStatus;
    }
}

TEST_F(RTSPFallOverTest, ARefusalForAnotherReasonDoesNot) {
    for (const char* lStatus : {"403", "404", "453", "500"}) {
        Serve("> DESCRIBE clip 1\n< 200 1 | SDP clip/ video\n> SETUP clip/video 2 | UDP 0\nS: RTSP/1.0 " +
              std::string(lStatus) + " No\nS: CSeq: 2\nS:\n");
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Transports", "udp,tcp");
        EXPECT_THROW(lPlayer.Play(URL(), Time(2, 1)), RTSPErr) << lStatus;
        EXPECT_EQ("", mServer->Failure()) << lStatus;
    }
}

TEST_F(RTSPFallOverTest, UDPAloneStaysRefused) {
    Serve("> DESCRIBE clip 1\n< 200 1 | SDP clip/ video\n> SETUP clip/video 2 | UDP 0\n< 461 2\n");
    mPlayer.SetConfigParam("RTSP:Transports", "udp");
    ExpectThrows<RTSPErr>(0x461, "RTSP::DoPlay(): SETUP failed: 461 Unsupported Transport", [this] { Play(); });
    EXPECT_EQ(1U, mReports.Count(Severity::Error, "Got RTSP response: 461 Unsupported Transport"));
}

TEST_F(RTSPFallOverTest, TCPAloneIsNotTriedOverUDP) {
    Serve("> DESCRIBE clip 1\n< 200 1 | SDP clip/ video\n> SETUP clip/video 2 | TCP 0\n< 461 2\n");
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    EXPECT_THROW(Play(), RTSPErr);
}

TEST_F(RTSPFallOverTest, ARefusalOfTheSecondTrackStartsBothAnew) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | UDP 0
        > SETUP clip/audio 3 | Session: 5 | UDP 1
        < 461 3
        > TEARDOWN clip 4 | Session: 5
        < 200 4
        > SETUP clip/video 5 | TCP 0
        < 200 5 | Session: 6 | TCP 0
        > SETUP clip/audio 6 | Session: 6 | TCP 1
        < 200 6 | Session: 6 | TCP 1
        > PLAY clip 7 | Session: 6 | Range: npt=0.000000-
        < 200 7 | RTP-Info: url=r/video
    )");
    Play();
    EXPECT_EQ(2U, mPlayer.GetTrackCount());
    EXPECT_EQ(1U, Complaints());
}

/// A start over UDP that gets nothing, and the same over TCP.
const std::string kSilence = R"(
    > DESCRIBE clip 1
    < 200 1 | SDP clip/ video
    > SETUP clip/video 2 | UDP 0
    < 200 2 | Session: 5 | UDP 0
    > PLAY clip 3 | Session: 5 | Range: npt=2.000000-
    < 200 3 | RTP-Info: url=r/video
)";
const std::string kThenTCP = R"(
    > TEARDOWN clip 4 | Session: 5
    < 200 4
    > SETUP clip/video 5 | TCP 0
    < 200 5 | Session: 6 | TCP 0
    > PLAY clip 6 | Session: 6 | Range: npt=2.000000-
    < 200 6 | RTP-Info: url=r/video
    SPLIT
    S$ 0 {packet}
    NOTIFY sent
)";

TEST_F(RTSPFallOverTest, SilenceLeadsToTCP) {
    Serve(kSilence + kThenTCP);
    mServer->Set("packet", TestSupport::Hex(TestSupport::RtpPacket().Type(96).Marker().Payload({0x41, 2}).Build()));
    mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    Play("clip", Time(2, 1));
    std::atomic<bool> lSent{false};
    std::thread lWaiter([&] { lSent = mServer->Await("sent"); });
    while (0 == mReports.Count(Severity::Warning, "No media over UDP, nothing has come: over TCP now")) {
        mPlayer.Produce(0);
    }
    lWaiter.join();
    EXPECT_TRUE(lSent);
    mPlayer.Produce(0);
    EXPECT_EQ(1U, mPlayer.GetTrackReception(0).mPacketsReceived);
    EXPECT_EQ(1U, Complaints());
}

TEST_F(RTSPFallOverTest, MediaThatCameOnceKeepsUDP) {
    Serve(kSilence + "RTP 0 {packet}\nNOTIFY sent\n");
    mServer->Set("packet", TestSupport::Hex(TestSupport::RtpPacket().Type(96).Marker().Payload({0x41, 2}).Build()));
    mPlayer.SetConfigParam("RTSP:UDPPatience", "3000");
    Play("clip", Time(2, 1));
    ASSERT_TRUE(mServer->Await("sent"));
    while (States().back() == "WaitData") {
        mPlayer.Produce(0);
    }
    mPlayer.SetConfigParam("RTSP:UDPPatience", "0");
    for (int i = 0; i < 100; ++i) {
        mPlayer.Produce(0);
    }
    EXPECT_EQ(0U, Complaints());
}

TEST_F(RTSPFallOverTest, UDPAloneIsWaitedFor) {
    Serve(kSilence);
    mPlayer.SetConfigParam("RTSP:Transports", "udp");
    mPlayer.SetConfigParam("RTSP:UDPPatience", "0");
    Play("clip", Time(2, 1));
    for (int i = 0; i < 100; ++i) {
        mPlayer.Produce(0);
    }
    EXPECT_EQ(0U, Complaints());
}

TEST_F(RTSPFallOverTest, AClosedPortLeadsToTCPAtOnce) {
    std::string lScript = kSilence + kThenTCP;
    const std::string lOpen = " | UDP 0\n    > PLAY";
    // Ports that nobody listens on: the server's own, over TCP only.
    lScript.replace(lScript.find(lOpen), lOpen.size(),
                    " | Transport: RTP/AVP;unicast;server_port={port}-{port}\n    > PLAY");
    Serve(lScript);
    mServer->Set("packet", TestSupport::Hex(TestSupport::RtpPacket().Type(96).Marker().Payload({0x41, 2}).Build()));
    mPlayer.SetConfigParam("RTSP:UDPPatience", "100000");
    Play("clip", Time(2, 1));
    while (0 == mReports.Count(Severity::Warning, "No media over UDP, the server's port is closed: over TCP now")) {
        mPlayer.Produce(0);
    }
    EXPECT_TRUE(mServer->Await("sent"));
}

TEST_F(RTSPFallOverTest, TheReceiveBufferIsThatAskedForOrReportedOnce) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | UDP 0
        > SETUP clip/audio 3 | Session: 5 | UDP 1
        < 200 3 | Session: 5 | UDP 1
        > PLAY clip 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | RTP-Info: url=r/video
    )");
    mPlayer.SetConfigParam("RTSP:UDPBuffer", "2000000000");
    Play();
    const std::vector<std::string> lWarnings = mReports.Messages(Severity::Warning);
    ASSERT_EQ(1U, lWarnings.size());
    EXPECT_EQ(0U, lWarnings[0].find("The system gives a receive buffer of "));
}

}  // namespace
}  // namespace Player::MediaSessions
