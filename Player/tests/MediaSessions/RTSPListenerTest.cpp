#include "MediaSessions/SessionFixture.hpp"
#include "Player/String.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;

/// Writes down the requests and responses that its session reports.
class Listener : public MediaPlayer {
public:
    void RequestSent(const std::string& aMethod, const std::string& aURL) override {
        mHeard.push_back(aMethod + " " + aURL);
    }
    void ResponseReceived(UInt aStatus, const std::string& aReason, const std::string& aServer) override {
        mHeard.push_back(StringWithFormat("%03x %s %s", aStatus, aReason.c_str(), aServer.c_str()));
    }

    std::vector<std::string> mHeard;
};

using RTSPListenerTest = SessionTest;

TEST_F(RTSPListenerTest, HearsRequestsAndResponses) {
    Serve(R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 100 Continue
        S: CSeq: 1
        S:
        < 200 1 | Server: Test/1.0 | SDP clip/ video
        > SETUP clip/video 2 | UDP 0
        S: OPTIONS * RTSP/1.0
        S: CSeq: 9
        S:
        < 200 2 | Session: 5 | UDP 0
        C: RTSP/1.0 501 Not Implemented
        C: CSeq: 9
        C:
        > PLAY clip 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=0
        > PAUSE clip 4 | Session: 5
        < 200 4
        > PLAY clip 5 | Session: 5
        < 200 5 | RTP-Info: url=r/video;seq=1;rtptime=0
        > PAUSE clip 6 | Session: 5
        < 200 6
        > PLAY clip 7 | Session: 5 | Range: npt=3.000000-
        < 200 7 | RTP-Info: url=r/video;seq=1;rtptime=0
        > TEARDOWN clip 8 | Session: 5
        < 454 8
    )");
    Listener lListener;
    lListener.Play(URL(), Time(0));
    lListener.Pause();
    lListener.Resume();
    lListener.Seek(Time(3, 1));
    lListener.Close();
    const std::string lURL = " " + URL();
    EXPECT_THAT(lListener.mHeard,
                ElementsAre("DESCRIBE" + lURL, "200 OK Test/1.0", "SETUP" + lURL + "/video", "200 OK ", "PLAY" + lURL,
                            "200 OK ", "PAUSE" + lURL, "200 OK ", "PLAY" + lURL, "200 OK ", "PAUSE" + lURL, "200 OK ",
                            "PLAY" + lURL, "200 OK ", "TEARDOWN" + lURL, "454 Session Not Found "));
}

TEST_F(RTSPListenerTest, HearsThatNoAnswerCame) {
    Serve(R"(
        > DESCRIBE clip 1
        CLOSE
    )");
    Listener lListener;
    EXPECT_THROW(lListener.Play(URL(), Time(0)), RTSPErr);
    EXPECT_THAT(lListener.mHeard, ElementsAre("DESCRIBE " + URL(), "000 Unknown "));
}

}  // namespace
}  // namespace Player::MediaSessions
