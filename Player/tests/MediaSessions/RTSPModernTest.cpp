// The modern profile: dialogues with servers that the classic one does not play.

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
             // No base at all.
             Case{Described(1, "", "clip/1"), lHost + "/clip/1", lHost + "/clip"},
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
        Serve("> DESCRIBE clip 1\n" + Described(1, "", "trackID=1") + "> SETUP trackID=1 2\nS: RTSP/1.0 " + lStatus +
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

TEST_F(RTSPModernTest, AURLThatIsRefusedTwiceOrForAnotherReasonIsAFailure) {
    Serve("> DESCRIBE clip 1\n" + Described(1, "", "trackID=1") + R"(
        > SETUP trackID=1 2
        < 404 2
        > SETUP clip/trackID=1 3
        < 404 3
    )");
    ExpectThrows<RTSPErr>(0x404, "RTSP::DoPlay(): SETUP failed: 404 Not Found", [this] { Play(); });
    EXPECT_EQ("", mServer->Failure());
    Serve("> DESCRIBE clip 1\n" + Described(1, "", "trackID=1") + "> SETUP trackID=1 2\n< 500 2\n");
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

}  // namespace
}  // namespace Player::MediaSessions
