// Redirections behind the description: the whole start is done anew at the new place.
#include "Crypto/Crypto.hpp"
#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;

const std::string kDescribed = "> DESCRIBE clip 1\n< 200 1 | SDP clip/ video\n";
const std::string kToLive = " | Location: rtsp://127.0.0.1:{port}/live\n";

/// A whole start at "live".
std::string LiveFrom(unsigned aCSeq) {
    const auto lNumber = [aCSeq](unsigned aStep) { return std::to_string(aCSeq + aStep); };
    return "> DESCRIBE live " + lNumber(0) + "\n< 200 " + lNumber(0) + " | SDP live/ video\n> SETUP live/video " +
           lNumber(1) + " | TCP 0\n< 200 " + lNumber(1) + " | Session: 6 | TCP 0\n> PLAY live/ " + lNumber(2) +
           " | Session: 6 | Range: npt=3.000000-\n< 200 " + lNumber(2) + "\n";
}

const std::string kPipelined = R"(
    > DESCRIBE clip 1
    < 200 1 | Supported: 3gpp-pipelined | SDP clip/ video
    > SETUP clip/video 2
    > PLAY clip/ 3
)";

/// The same start with all requests at once: it is the same server.
std::string PipelinedLiveFrom(unsigned aCSeq) {
    const auto lNumber = [aCSeq](unsigned aStep) { return std::to_string(aCSeq + aStep); };
    return "> DESCRIBE live " + lNumber(0) + "\n< 200 " + lNumber(0) + " | SDP live/ video\n> SETUP live/video " +
           lNumber(1) + " | Pipelined-Requests: 00000002 | TCP 0\n> PLAY live/ " + lNumber(2) + "\n< 200 " +
           lNumber(1) + " | Session: 6 | TCP 0\n< 200 " + lNumber(2) + "\n";
}

class RTSPRedirectionTest : public SessionTest {
protected:
    void SetUp() override {
        mHandler.SetConfigParam("RTSP:Profile", "modern");
        mHandler.SetConfigParam("RTSP:Transports", "tcp");
        mPlayer.SetConfigParam("RTSP:Profile", "modern");
        mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    }
    void ExpectPlays(const std::string& aDialogue) {
        Serve(aDialogue);
        EXPECT_NO_THROW(Play("clip", Time(3, 1)));
        EXPECT_EQ("", mServer->Failure());
    }
};

TEST_F(RTSPRedirectionTest, ASetupIsFollowed) {
    for (const char* lStatus : {"301", "302", "303", "307", "308"}) {
        Serve(kDescribed + "> SETUP clip/video 2 | TCP 0\nS: RTSP/1.0 " + lStatus +
              " Moved\nS: CSeq: 2\nS: Location: /live\nS:\n" + LiveFrom(3));
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        lPlayer.SetConfigParam("RTSP:Transports", "tcp");
        EXPECT_NO_THROW(lPlayer.Play(URL(), Time(3, 1))) << lStatus;
        EXPECT_EQ("", mServer->Failure()) << lStatus;
    }
}

TEST_F(RTSPRedirectionTest, APlayIsFollowedAndTheSessionLeft) {
    Serve(kDescribed + "> SETUP clip/video 2\n< 200 2 | Session: 5 | TCP 0\n> PLAY clip/ 3\n< 302 3" + kToLive +
          "> TEARDOWN clip/ 4 | Session: 5\n< 200 4\n" + LiveFrom(5));
    mHandler.Play(URL(), Time(3, 1));
    EXPECT_EQ("", mServer->Failure());
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("SelectTracks video", "AvailableRange 0 0", "AcceptTrack video", "Reset",
                            "SelectTracks video", "AvailableRange 0 0", "AcceptTrack video", "video: Flush",
                            "PlayingRange 0 0", "video: State=WaitData"));
}

TEST_F(RTSPRedirectionTest, TheSecondSetupToo) {
    ExpectPlays(
        "> DESCRIBE clip 1\n< 200 1 | SDP clip/ video audio\n> SETUP clip/video 2\n< 200 2 | Session: 5 | TCP 0\n" +
        std::string("> SETUP clip/audio 3\n< 302 3") + kToLive + "> TEARDOWN clip/ 4 | Session: 5\n< 454 4\n" +
        LiveFrom(5));
}

TEST_F(RTSPRedirectionTest, TheConnectionMayCloseWithTheAnswer) {
    // The server that ends the connection has no session left to end.
    ExpectPlays(kDescribed +
                "> SETUP clip/video 2\n< 200 2 | Session: 5 | TCP 0\n> PLAY clip/ 3\n< 302 3 | Connection: close" +
                kToLive + "CLOSE\nACCEPT\n" + LiveFrom(4));
}

TEST_F(RTSPRedirectionTest, PipelinedAnswersAreAllReadFirst) {
    ExpectPlays(kPipelined + "< 302 2" + kToLive + "< 454 3\n" + PipelinedLiveFrom(4));
}

TEST_F(RTSPRedirectionTest, APipelinedPlayIsFollowed) {
    ExpectPlays(kPipelined + "< 200 2 | Session: 5 | TCP 0\n< 302 3" + kToLive +
                "> TEARDOWN clip/ 4 | Session: 5\n< 200 4\n" + PipelinedLiveFrom(5));
}

TEST_F(RTSPRedirectionTest, AnotherServerIsAskedWithoutTheCredentials) {
    if (!Crypto::IsAvailable()) { GTEST_SKIP() << "built without GnuTLS"; }
    TestSupport::ScriptedServer lElsewhere(Dialogue(R"(
        C: DESCRIBE rtsp://localhost:{port}/clip RTSP/1.0
        C: CSeq: 5
        C: User-Agent: {*}
        C: Supported: {*}
        C: Accept: {*}
        C:
        < 401 5 | WWW-Authenticate: Basic realm="cam"
    )"));
    Serve(R"(
        > DESCRIBE clip 1
        < 401 1 | WWW-Authenticate: Basic realm="cam"
        > DESCRIBE clip 2
        < 200 2 | SDP clip/ video
        > SETUP clip/video 3 | Authorization: Basic bWU6c2VjcmV0 | TCP 0
        < 200 3 | Session: 5 | TCP 0
        > PLAY clip/ 4 | Authorization: Basic bWU6c2VjcmV0 | Session: 5 | Range: npt=0.000000-
        < 302 4 | Connection: close | Location: rtsp://localhost:{other}/clip
    )");
    mServer->Set("other", std::to_string(lElsewhere.Port()));
    mPlayer.SetConfigParam("RTSP:UserName", "me");
    mPlayer.SetConfigParam("RTSP:Password", "secret");
    ExpectThrows<RTSPErr>(0x401, "RTSP::DoDescribe(): DESCRIBE failed: 401 Unauthorized", [this] { Play(); });
    EXPECT_EQ("", lElsewhere.Failure());
}

/// What is known of one server does not count for the next: here, that it wants TCP and takes requests at once.
TEST_F(RTSPRedirectionTest, AnotherServerIsTriedOverUDP) {
    TestSupport::ScriptedServer lElsewhere(Dialogue(R"(
        C: DESCRIBE rtsp://localhost:{port}/clip RTSP/1.0
        C...
        < 200 7 | SDP rtsp://localhost:{port}/clip/ video
        C: SETUP rtsp://localhost:{port}/clip/video RTSP/1.0
        C: CSeq: 8
        C: User-Agent: {*}
        C: Transport: RTP/AVP;unicast;client_port={*}
        C:
        < 200 8 | Session: 6 | Transport: RTP/AVP;unicast
        C: PLAY rtsp://localhost:{port}/clip/ RTSP/1.0
        C...
        < 200 9
    )"));
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-pipelined | SDP clip/ video
        > SETUP clip/video 2
        > PLAY clip/ 3
        < 461 2
        < 454 3
        > SETUP clip/video 4
        > PLAY clip/ 5
        < 200 4 | Session: 5 | TCP 0
        < 302 5 | Location: rtsp://localhost:{other}/clip
        > TEARDOWN clip/ 6 | Session: 5
        < 200 6
    )");
    mServer->Set("other", std::to_string(lElsewhere.Port()));
    mPlayer.SetConfigParam("RTSP:Transports", "udp,tcp");
    EXPECT_NO_THROW(Play());
    EXPECT_EQ("", lElsewhere.Failure());
}

TEST_F(RTSPRedirectionTest, HopsCountOverAllRequests) {
    // Two at the description, then at SETUP and PLAY in turn: the sixth is a refusal.
    std::string lScript;
    unsigned lCSeq = 0;
    const auto lAsk = [&](const std::string& aRequest, const std::string& aAnswer, const std::string& aMore) {
        const std::string lNumber = std::to_string(++lCSeq);
        lScript += "> " + aRequest + " " + lNumber + "\n< " + aAnswer + " " + lNumber + aMore + "\n";
    };
    lAsk("DESCRIBE clip", "302", " | Location: /a");
    lAsk("DESCRIBE a", "302", " | Location: /clip");
    for (unsigned lHop = 3; lHop <= 6; ++lHop) {
        lAsk("DESCRIBE clip", "200", " | SDP clip/ video");
        if (1 == lHop % 2) {
            lAsk("SETUP clip/video", "302", " | Location: /clip");
            continue;
        }
        lAsk("SETUP clip/video", "200", " | Session: 5 | TCP 0");
        lAsk("PLAY clip/", "302", " | Location: /clip");
        if (lHop < 6) { lAsk("TEARDOWN clip/", "200", ""); }
    }
    Serve(lScript);
    ExpectThrows<RTSPErr>(0x302, "RTSP::DoPlay(): PLAY failed: 302 Found", [this] { Play(); });
}

TEST_F(RTSPRedirectionTest, ThePlaceHasToBeOne) {
    for (const char* lLocation : {"", "http://127.0.0.1/clip", "rtsp://", "rtsp:///clip"}) {
        Serve(kDescribed + "> SETUP clip/video 2\n< 302 2 | Location: " + lLocation + "\n");
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        lPlayer.SetConfigParam("RTSP:Transports", "tcp");
        ExpectThrows<RTSPErr>(0x302, "RTSP::DoPlay(): SETUP failed: 302 Found", [&] { lPlayer.Play(URL(), Time(0)); });
        EXPECT_EQ("", mServer->Failure()) << lLocation;
    }
}

TEST_F(RTSPRedirectionTest, APlaceThatDoesNotPlayLeavesTheNextPlayAlone) {
    Serve(kDescribed + "> SETUP clip/video 2\n< 302 2" + kToLive + "> DESCRIBE live 3\n< 404 3\n" + R"(
        > DESCRIBE clip 4
        < 200 4 | SDP clip/ video
        > SETUP clip/video 5 | TCP 0
        < 200 5 | Session: 5 | TCP 0
        > PLAY clip/ 6
        < 200 6
    )");
    ExpectThrows<RTSPErr>(0x404, "RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found", [this] { Play(); });
    EXPECT_NO_THROW(Play());
}

TEST_F(RTSPRedirectionTest, WhatPlaysIsNotLedAway) {
    // The tracks of another presentation are not those that are being watched.
    Serve(kDescribed + R"(
        > SETUP clip/video 2
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip/ 3
        < 200 3
        > PAUSE clip/ 4
        < 200 4
        > PLAY clip/ 5
        < 302 5 | Location: /live
    )");
    Play();
    ExpectThrows<RTSPErr>(0x302, "RTSP::DoPlay(): Seeking PLAY failed: 302 Found",
                          [this] { mPlayer.Seek(Time(1, 1)); });
}

TEST_F(RTSPRedirectionTest, ClassicFollowsNone) {
    mPlayer.SetConfigParam("RTSP:Profile", "classic");
    Serve(kDescribed + "> SETUP clip/video 2\n< 302 2 | Location: /live\n");
    ExpectThrows<RTSPErr>(0x302, "RTSP::DoPlay(): SETUP failed: 302 Found", [this] { Play(); });
}

}  // namespace
}  // namespace Player::MediaSessions
