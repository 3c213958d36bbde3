// RTSP within TLS: what is played, and what is refused before anything is said.

#include <cerrno>
#include <thread>

#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/SessionFixture.hpp"
#include "Player/Features.hpp"
#include "support/TLSRelay.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {
namespace {

using TestSupport::TLSRelay;
using Flaw = TestSupport::Certificates::Flaw;

const std::string kStart = R"(
    > DESCRIBE clip 1
    < 200 1 | SDP clip/ video
    > SETUP clip/video 2 | TCP 0
    < 200 2 | Session: 5 | TCP 0
    > PLAY clip/ 3 | Session: 5 | Range: npt=0.000000-
    < 200 3 | RTP-Info: url=r/video
)";

class RTSPSecureTest : public SessionTest {
protected:
    void SetUp() override {
        if (!HasTLS()) { GTEST_SKIP() << "built without GnuTLS"; }
        mPlayer.SetConfigParam("RTSP:Profile", "modern");
        mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    }

    /// A server that plays the dialogue, behind TLS.
    void ServeSecurely(const std::string& aDialogue, TLSRelay::Manners aManners = TLSRelay::Manners()) {
        std::string lScript = Dialogue(aDialogue);
        const std::string lPlain = "rtsp://127.0.0.1:{port}";
        const std::string lSecure = "rtsps://127.0.0.1:{tls}";
        for (std::size_t lAt = 0; std::string::npos != (lAt = lScript.find(lPlain, lAt)); lAt += lSecure.size()) {
            lScript.replace(lAt, lPlain.size(), lSecure);
        }
        mServer = std::make_unique<TestSupport::ScriptedServer>(lScript);
        Relay(mServer->Port(), aManners);
        mServer->Set("tls", std::to_string(mRelay->Port()));
    }
    void Relay(unsigned aPort, TLSRelay::Manners aManners) {
        mRelay = std::make_unique<TLSRelay>(aPort, aManners);
        mPlayer.SetConfigParam("RTSP:TLSAuthorities", mRelay->AuthoritiesFile());
    }
    std::string SecureURL(const std::string& aHost = "127.0.0.1") const {
        return "rtsps://" + aHost + ":" + std::to_string(mRelay->Port()) + "/clip";
    }
    /// What playing throws.
    std::string Refusal() {
        return TestSupport::Thrown([this] { mPlayer.Play(SecureURL(), Time(0)); });
    }

    static TLSRelay::Manners With(Flaw aFlaw) {
        TLSRelay::Manners lManners;
        lManners.mFlaw = aFlaw;
        return lManners;
    }

    std::unique_ptr<TLSRelay> mRelay;
};

std::string Packet(unsigned aSeq, const TestSupport::Bytes& aPayload) {
    const TestSupport::RtpPacket lPacket = TestSupport::RtpPacket().Type(96).Seq(aSeq).Timestamp(3000 * aSeq).Marker();
    return TestSupport::Hex(TestSupport::RtpPacket(lPacket).Payload(aPayload).Build());
}

TEST_F(RTSPSecureTest, MediaComesWithinTheSecuredConnection) {
    ServeSecurely(kStart + "SPLIT\nS$ 0 {a}\nS$ 0 {b}\nNOTIFY sent\n> TEARDOWN clip/ 4\n< 200 4\nEND\n");
    mServer->Set("a", Packet(1, {0x41, 1}));
    mServer->Set("b", Packet(2, {0x41, 2}));
    mPlayer.Play(SecureURL(), Time(0));
    ASSERT_TRUE(mServer->Await("sent"));
    while (mPlayer.GetTrackReception(0).mPacketsReceived < 2) {
        mPlayer.Produce(0);
    }
    EXPECT_TRUE(mPlayer.TrackHasPacket(0));
    EXPECT_FALSE(Reported("Secured: ").empty());
    mPlayer.Close();
    EXPECT_EQ("", mServer->Failure());
}

TEST_F(RTSPSecureTest, RecordsMayComeInPieces) {
    TLSRelay::Manners lManners;
    lManners.mPiece = 1;
    ServeSecurely(kStart, lManners);
    mPlayer.Play(SecureURL(), Time(0));
}

TEST_F(RTSPSecureTest, NamesAndAddressesAreVerified) {
    for (const char* lHost : {"127.0.0.1", "localhost", "LOCALHOST"}) {
        mServer = std::make_unique<TestSupport::ScriptedServer>(Dialogue(R"(
            C: DESCRIBE rtsps://{*}/clip RTSP/1.0
            C...
            < 404 1
        )"));
        Relay(mServer->Port(), {});
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        lPlayer.SetConfigParam("RTSP:TLSAuthorities", mRelay->AuthoritiesFile());
        EXPECT_EQ("17/1028 RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found",
                  TestSupport::Thrown([&] { lPlayer.Play(SecureURL(lHost), Time(0)); }))
            << lHost;
    }
}

TEST_F(RTSPSecureTest, ARefusalSaysWhatIsWrongWithTheCertificate) {
    const struct {
        Flaw mFlaw;
        const char* mWords;
    } kTable[] = {{Flaw::kOtherName, "does not match the expected"},
                  {Flaw::kExpired, "expired"},
                  {Flaw::kUnknownAuthority, "issuer is unknown"}};
    for (const auto& lRow : kTable) {
        // Nobody is there to be passed on to: nothing is said.
        Relay(1, With(lRow.mFlaw));
        const std::string lRefusal = Refusal();
        EXPECT_EQ(0U, lRefusal.find("3/48 TLS::Handshake(): The certificate of 127.0.0.1 is refused: ")) << lRefusal;
        EXPECT_NE(std::string::npos, lRefusal.find(lRow.mWords)) << lRefusal;
    }
}

TEST_F(RTSPSecureTest, TheSystemsAuthoritiesDoNotVouchForAnybody) {
    Relay(1, {});
    mPlayer.SetConfigParam("RTSP:TLSAuthorities", "");
    EXPECT_NE(std::string::npos, Refusal().find("issuer is unknown"));
}

TEST_F(RTSPSecureTest, AFileWithoutAuthoritiesIsRefused) {
    Relay(1, {});
    for (const char* lFile : {"/nowhere", "/dev/null"}) {
        mPlayer.SetConfigParam("RTSP:TLSAuthorities", lFile);
        EXPECT_EQ(0U, Refusal().find("3/48 TLS::TLS(): No authorities in " + std::string(lFile) + ": "));
    }
}

TEST_F(RTSPSecureTest, AServerWithoutTLSIsRefused) {
    Testing::Peer lPeer;
    std::thread lServer([&] {
        lPeer.Accept();
        lPeer.Send("RTSP/1.0 400 Bad Request\r\n\r\n");
    });
    const std::string lRefusal = TestSupport::Thrown([&] { mPlayer.Play("rtsps://" + lPeer.Authority(), Time(0)); });
    lServer.join();
    EXPECT_EQ(0U, lRefusal.find("3/48 TLS::Handshake(): No TLS with 127.0.0.1: ")) << lRefusal;
}

TEST_F(RTSPSecureTest, AHandshakeThatStallsTimesOut) {
    TLSRelay::Manners lManners;
    lManners.mPiece = 1;
    lManners.mMutedAfter = 100;
    Relay(1, lManners);
    mPlayer.SetConfigParam("RTSP:TimeOutAfter", "1");
    EXPECT_EQ("3/35 TLS::Handshake(): The server does not answer in time", Refusal());
}

TEST_F(RTSPSecureTest, ARecordThatStaysIncompleteTimesOut) {
    TLSRelay::Manners lManners;
    lManners.mMutedInRecordsAfter = 20;
    ServeSecurely("> DESCRIBE clip 1\n< 404 1\n", lManners);
    mPlayer.SetConfigParam("RTSP:TimeOutAfter", "1");
    try {
        mPlayer.Play(SecureURL(), Time(0));
        FAIL() << "played";
    } catch (const NetworkErr& lError) {
        EXPECT_EQ(ErrorCode::kReadFailed, lError.Error());
        EXPECT_EQ(ETIMEDOUT, lError.SystemError());
    }
}

TEST_F(RTSPSecureTest, AnEndIsOneWhetherOrNotItIsAnnounced) {
    for (const bool lSaysGoodbye : {true, false}) {
        TLSRelay::Manners lManners;
        lManners.mSaysGoodbye = lSaysGoodbye;
        ServeSecurely("> DESCRIBE clip 1\nCLOSE\n", lManners);
        EXPECT_EQ("17/0 RTSP::DoDescribe(): DESCRIBE failed: 000 Unknown", Refusal());
        EXPECT_EQ("", mServer->Failure());
        mPlayer.Close();
    }
}

TEST_F(RTSPSecureTest, ThereIsNoWayThroughAProxy) {
    Relay(1, {});
    mPlayer.SetConfigParam("RTSP:UseProxy", "127.0.0.1:1");
    EXPECT_EQ("3/48 RTSP::DoReconnect(): No rtsps through a proxy", Refusal());
}

TEST_F(RTSPSecureTest, ARedirectionMayLeadToASecuredServer) {
    ServeSecurely("> DESCRIBE clip 2\n< 404 2\n");
    TestSupport::ScriptedServer lFirst(Dialogue(R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 302 Moved
        S: CSeq: 1
        S: Location: rtsps://127.0.0.1:{tls}/clip
        S:
    )"));
    lFirst.Set("tls", std::to_string(mRelay->Port()));
    EXPECT_THROW(mPlayer.Play(lFirst.URL(), Time(0)), RTSPErr);
    EXPECT_EQ("", lFirst.Failure());
}

TEST_F(RTSPSecureTest, CredentialsDoNotLeaveTheSecuredConnection) {
    TestSupport::ScriptedServer lPlain(Dialogue(R"(
        > DESCRIBE clip 3 | Supported: {*} | Accept: {*}
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 3
        S: WWW-Authenticate: Basic realm="cam"
        S:
    )"));
    ServeSecurely(R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 401 Unauthorized
        S: CSeq: 1
        S: WWW-Authenticate: Basic realm="cam"
        S:
        > DESCRIBE clip 2
        S: RTSP/1.0 302 Moved
        S: CSeq: 2
        S: Location: rtsp://127.0.0.1:{other}/clip
        S:
    )");
    mServer->Set("other", std::to_string(lPlain.Port()));
    mPlayer.SetConfigParam("RTSP:UserName", "me");
    EXPECT_THROW(mPlayer.Play(SecureURL(), Time(0)), RTSPErr);
    EXPECT_EQ("", lPlain.Failure());
}

TEST_F(SessionTest, ClassicSaysThatItDoesNotSecure) {
    Serve("C: DESCRIBE rtsps://127.0.0.1:{port}/clip RTSP/1.0\nC...\n< 404 1\n");
    const std::string lURL = "rtsps" + URL().substr(4);
    EXPECT_THROW(mPlayer.Play(lURL, Time(0)), RTSPErr);
    EXPECT_EQ(
        1U, mReports.Count(Severity::Warning, "The profile \"classic\" knows no rtsps: the connection is not secured"));
}

TEST_F(SessionTest, WithoutGnuTLSNothingIsSecured) {
    if (HasTLS()) { GTEST_SKIP() << "built with GnuTLS"; }
    Serve("END");
    mPlayer.SetConfigParam("RTSP:Profile", "modern");
    ExpectThrows<NetworkErr>(ErrorCode::kTLSFailed, "TLS::TLS(): Built without GnuTLS: no rtsps",
                             [this] { mPlayer.Play("rtsps" + URL().substr(4), Time(0)); });
}

}  // namespace
}  // namespace Player::MediaSessions
