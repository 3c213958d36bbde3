// Servers that offer multicast only.
#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

constexpr unsigned kNumber = 20;
const char* const kMulticastOnly = "RTSP::DoPlay(): The server offers multicast only, which is not supported";
const std::string kOffer = "Transport: RTP/AVP;multicast;destination=239.1.2.3;port=5000-5001;ttl=16";
const std::string kDescribed = "> DESCRIBE clip 1\n< 200 1 | SDP clip/ video\n";
/// The fall from UDP to TCP behind an offer, which has made a session.
const std::string kOfferedOverUDP = kDescribed + "> SETUP clip/video 2 | UDP 0\n< 200 2 | Session: 5 | " + kOffer +
                                    "\n> TEARDOWN clip/ 3 | Session: 5\n< 200 3\n> SETUP clip/video 4 | TCP 0\n";

class RTSPMulticastTest : public SessionTest {
protected:
    void SetUp() override { mPlayer.SetConfigParam("RTSP:Profile", "modern"); }
    void ExpectMulticastOnly() {
        ExpectThrows<RTSPErr>(kNumber, kMulticastOnly, [this] { Play(); });
        EXPECT_EQ("", mServer->Failure());
    }
};

TEST_F(RTSPMulticastTest, AnOfferLeadsToTCP) {
    Serve(kOfferedOverUDP +
          "< 200 4 | Session: 6 | TCP 0\n> PLAY clip/ 5 | Session: 6 | Range: npt=0.000000-\n< 200 5\n");
    EXPECT_NO_THROW(Play());
    EXPECT_EQ("", mServer->Failure());
    EXPECT_EQ(1U, mReports.Count(Severity::Warning, "No media over UDP, the server refuses UDP: over TCP now"));
}

TEST_F(RTSPMulticastTest, AnOfferForUDPAndForTCPIsAFailure) {
    Serve(kOfferedOverUDP + "< 200 4 | Session: 6 | " + kOffer + "\n");
    ExpectMulticastOnly();
}

TEST_F(RTSPMulticastTest, SoIsAnOfferForUDPAndARefusalOfTCP) {
    Serve(kOfferedOverUDP + "< 461 4\n");
    ExpectMulticastOnly();
}

TEST_F(RTSPMulticastTest, SoIsARefusalOfBoth) {
    Serve(kDescribed + "> SETUP clip/video 2 | UDP 0\n< 461 2\n> SETUP clip/video 3 | TCP 0\n< 461 3\n");
    ExpectMulticastOnly();
}

TEST_F(RTSPMulticastTest, SoIsAnOfferWhereOneWayAloneIsAllowed) {
    for (const char* lWay : {"udp", "tcp"}) {
        Serve(kDescribed + "> SETUP clip/video 2\n< 200 2 | Session: 5 | " + kOffer + "\n");
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        lPlayer.SetConfigParam("RTSP:Transports", lWay);
        ExpectThrows<RTSPErr>(kNumber, kMulticastOnly, [&] { lPlayer.Play(URL(), Time(0)); });
        EXPECT_EQ("", mServer->Failure()) << lWay;
    }
}

TEST_F(RTSPMulticastTest, ARefusalOfOneWayOrForAnotherReasonSaysNothingOfMulticast) {
    Serve(kDescribed + "> SETUP clip/video 2 | TCP 0\n< 461 2\n");
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    ExpectThrows<RTSPErr>(0x461, "RTSP::DoPlay(): SETUP failed: 461 Unsupported Transport", [this] { Play(); });
    EXPECT_EQ("", mServer->Failure());

    Serve(kDescribed + "> SETUP clip/video 2 | UDP 0\n< 461 2\n> SETUP clip/video 3 | TCP 0\n< 500 3\n");
    mPlayer.SetConfigParam("RTSP:Transports", "udp,tcp");
    ExpectThrows<RTSPErr>(0x500, "RTSP::DoPlay(): SETUP failed: 500 Internal Server Error", [this] { Play(); });
    EXPECT_EQ("", mServer->Failure());
}

TEST_F(RTSPMulticastTest, AnAddressOfTheDescriptionIsNoReason) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Content-Base: rtsp://127.0.0.1:{port}/clip/ | Content-Length: {length}
        S| v=0
        S| c=IN IP4 239.1.2.3/16
        S| m=video 5000 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=control:video
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | UDP 0
        > PLAY clip/ 3
        < 200 3
    )");
    EXPECT_NO_THROW(Play());
    EXPECT_EQ("", mServer->Failure());
}

TEST_F(RTSPMulticastTest, ASecondPlayIsSeenAnew) {
    Serve(kOfferedOverUDP + "< 200 4 | Session: 6 | " + kOffer + R"(
        > TEARDOWN clip/ 5 | Session: 6
        < 200 5
        END
        ACCEPT
        > DESCRIBE clip 1
        < 404 1
    )");
    EXPECT_THROW(Play(), RTSPErr);
    mPlayer.Stop();
    ExpectThrows<RTSPErr>(0x404, "RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found", [this] { Play(); });
}

const std::string kPipelined = R"(
    > DESCRIBE clip 1
    < 200 1 | Supported: 3gpp-pipelined | SDP clip/ video
    > SETUP clip/video 2
    > PLAY clip/ 3
)";

TEST_F(RTSPMulticastTest, PipelinedItIsTheSame) {
    for (const bool lIsOffer : {true, false}) {
        const auto lRefusal = [&](const char* aCSeq) {
            return lIsOffer ? std::string("< 200 ") + aCSeq + " | Session: 5 | " + kOffer + "\n"
                            : std::string("< 461 ") + aCSeq + "\n";
        };
        Serve(kPipelined + lRefusal("2") + "< 454 3\n" +
              (lIsOffer ? "> TEARDOWN clip/ 4 | Session: 5\n< 200 4\n> SETUP clip/video 5\n> PLAY clip/ 6\n"
                        : "> SETUP clip/video 4\n> PLAY clip/ 5\n") +
              (lIsOffer ? lRefusal("5") + "< 454 6\n> TEARDOWN clip/ 7 | Session: 5\n< 200 7\n"
                        : lRefusal("4") + "< 454 5\n"));
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        ExpectThrows<RTSPErr>(kNumber, kMulticastOnly, [&] { lPlayer.Play(URL(), Time(0)); });
        EXPECT_EQ("", mServer->Failure()) << lIsOffer;
    }
}

TEST_F(RTSPMulticastTest, ClassicTakesTheOfferForWhatItAskedFor) {
    for (const char* lProfile : {"", "classic"}) {
        Serve(kDescribed + "> SETUP clip/video 2 | UDP 0\n< 200 2 | Session: 5 | " + kOffer +
              "\n> PLAY clip 3\n< 200 3 | RTP-Info: url=r/video\n");
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Profile", lProfile);
        EXPECT_NO_THROW(lPlayer.Play(URL(), Time(0)));
        EXPECT_EQ("", mServer->Failure());
    }
}

}  // namespace
}  // namespace Player::MediaSessions
