#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A presentation of two tracks is played; the next is played by switching, or, where that is not possible,
/// set up anew.
class RTSPSwitchTest : public SessionTest {
protected:
    void Start(const std::string& aDialogue, const std::string& aSupported = "3gpp-switch-req-sdp") {
        Interleave();
        Serve(R"(
            > DESCRIBE clip 1
            < 200 1 | Supported: )" +
              aSupported + R"( | SDP clip/ video audio range=0-20
            > SETUP clip/video 2 | TCP 0
            < 200 2 | Session: 5 | TCP 0
            > SETUP clip/audio 3 | Session: 5 | TCP 1
            < 200 3 | TCP 1
            > PLAY clip 4 | Session: 5 | Range: npt=0.000000-
            < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=0,url=r/audio;seq=1;rtptime=0 | Range: npt=0-20
        )" + aDialogue);
        mHandler.Play(URL(), Time(0));
        mHandler.TakeCalls();
    }
    void Switch(const std::string& aPath = "other") { mHandler.Play(URL(aPath), Time(3, 2)); }
};

const char* const kSwitchingPlay = R"(
    > PLAY other 5 | Session: 5 | Require: 3gpp-switch-req-sdp | SDP-Requested: 1 | Range: npt=1.500000-
)";
const char* const kSetUpAnew = R"(
    > TEARDOWN other 6 | Session: 5
    < 200 6
    > DESCRIBE other 7
    < 200 7 | SDP other/ video range=0-9
    > SETUP other/video 8 | TCP 0
    < 200 8 | Session: 6 | TCP 0
    > PLAY other 9 | Session: 6 | Range: npt=1.500000-
    < 200 9 | RTP-Info: url=r/video | Range: npt=0-9
)";

TEST_F(RTSPSwitchTest, OnePlayReplacesTheTracks) {
    // The new tracks come in another order, the set-up ones stay in theirs.
    Start(kSwitchingPlay + std::string(R"(
        < 200 5 | RTP-Info: url=r/b;seq=7;rtptime=0 | Range: npt=1.5-8 | SDP - audio@a video@b range=0-8
        > PAUSE other 6 | Session: 5
        < 200 6
    )"));
    Switch();
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("video: Flush", "audio: Flush", "Reset", "SelectTracks a b", "AvailableRange 0 8",
                            "AcceptTrack b", "AcceptTrack a", "PlayingRange 1.5 8"));
    EXPECT_THAT(States(), ElementsAre("WaitData")) << "it was waiting for data before";
    EXPECT_EQ(URL("other/b"), mHandler.mAccepted[2]->Get("URL"));
    EXPECT_EQ(URL("other/a"), mHandler.mAccepted[3]->Get("URL"));
    EXPECT_THAT(mReports.Errors(), ElementsAre());
    // The new chains are the ones that hear of it.
    mHandler.Pause();
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("b: State=Paused", "a: State=Paused"));
}

TEST_F(RTSPSwitchTest, WhatPlayedWaitsForDataAgain) {
    const auto lFrame = [](unsigned aSeq) {
        const auto lPacket = TestSupport::RtpPacket().Seq(aSeq).Timestamp(90000 * aSeq).Ssrc(7).Payload({0x65}).Build();
        return "S$ 0 " + TestSupport::Hex(lPacket) + "\n";
    };
    mHandler.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    Start("AWAIT plays\n" + lFrame(1) + lFrame(2) + "NOTIFY sent\n" + kSwitchingPlay +
          "< 200 5 | RTP-Info: url=r/video | SDP - video audio\n");
    mServer->Notify("plays");
    ASSERT_TRUE(mServer->Await("sent"));
    EXPECT_TRUE(mHandler.Fill(0));
    Switch();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing", "WaitData"));
    EXPECT_FALSE(mHandler.Fill(0));
}

TEST_F(RTSPSwitchTest, NothingOfTheOldDescriptionServesForAnEmptyOne) {
    Start(kSwitchingPlay + std::string(R"(
        < 404 5
        > TEARDOWN other 6 | Session: 5
        < 200 6
        > DESCRIBE other 7
        < 200 7
    )"));
    ExpectThrows<SDPErr>(2, "RTSP::HandleSDP(): Invalid or incomplete SDP", [this] { Switch(); });
}

TEST_F(RTSPSwitchTest, TheNewPresentationsFormatCounts) {
    using TestSupport::Hex;
    using TestSupport::RtpPacket;
    Interleave();
    mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "1");
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-switch-req-sdp | SDP clip/ video
        > SETUP clip/video 2
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=0
        > PLAY other 4
        < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=1000 | SDP - video:99:1000
        SPLIT
        S$ 0 {old}
        S$ 0 {first}
        S$ 0 {last}
        NOTIFY sent
    )");
    mServer->Set("old", Hex(RtpPacket().Type(96).Seq(1).Marker().Payload({0x65}).Build()));
    mServer->Set("first", Hex(RtpPacket().Type(99).Seq(1).Timestamp(1500).Marker().Payload({0x65}).Build()));
    mServer->Set("last", Hex(RtpPacket().Type(99).Seq(2).Timestamp(2501).Marker().Payload({0x65}).Build()));
    Play();
    Play("other");
    ASSERT_TRUE(mServer->Await("sent"));
    EXPECT_EQ(Time(1, 2), TakeSample(0));
    EXPECT_EQ(2U, mPlayer.GetTrackReception(0).mPacketsReceived);
}

// The range counts in seconds, whatever the clock rate was before.
TEST_F(RTSPSwitchTest, TheNewPresentationBeginsWhereItsRangeDoes) {
    Interleave();
    mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-switch-req-sdp | SDP clip/ video
        > SETUP clip/video 2
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=0
        > PLAY other 4
        < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=1000 | Range: npt=10- | SDP - video:99:1000
        SPLIT
        S$ 0 {first}
        S$ 0 {last}
        NOTIFY sent
    )");
    using TestSupport::Hex;
    using TestSupport::RtpPacket;
    mServer->Set("first", Hex(RtpPacket().Type(99).Seq(1).Timestamp(1000).Marker().Payload({0x65}).Build()));
    mServer->Set("last", Hex(RtpPacket().Type(99).Seq(2).Timestamp(3000).Marker().Payload({0x65}).Build()));
    Play();
    Play("other");
    ASSERT_TRUE(mServer->Await("sent"));
    EXPECT_EQ(Time(10, 1), TakeSample(0));
    EXPECT_EQ(Time(12, 1), TakeSample(0));
}

TEST_F(RTSPSwitchTest, APlayingRangeIsThatOfItsPresentation) {
    Start(kSwitchingPlay + std::string(R"(
        < 200 5 | RTP-Info: url=r/video | SDP - video audio range=0-8
    )"));
    Switch();
    EXPECT_EQ("PlayingRange 0 0", mHandler.TakeCalls().back());
}

TEST_F(RTSPSwitchTest, WhatIsSetUpInPartIsNotSwitched) {
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-switch-req-sdp | SDP clip/ video audio
        > SETUP clip/video 2
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3
        < 461 3
        > TEARDOWN clip 4 | Session: 5
        < 200 4
        > DESCRIBE other 5
        < 200 5 | SDP other/ video
        > SETUP other/video 6 | TCP 0
        < 200 6 | Session: 6 | TCP 0
        > PLAY other 7 | Session: 6 | Range: npt=1.500000-
        < 200 7 | RTP-Info: url=r/video
    )");
    EXPECT_THROW(mHandler.Play(URL(), Time(0)), RTSPErr);
    Switch();
}

TEST_F(RTSPSwitchTest, TracksOfOneTypeAllGetTheFirstDescribed) {
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-switch-req-sdp | SDP clip/ video@a video@b
        > SETUP clip/a 2
        < 200 2 | Session: 5
        > SETUP clip/b 3
        < 200 3
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/a
        > PLAY other 5
        < 200 5 | RTP-Info: url=r/c | SDP - video@c video@d
    )");
    mHandler.Play(URL(), Time(0));
    mHandler.TakeCalls();
    Switch();
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("a: Flush", "b: Flush", "Reset", "SelectTracks c d", "AvailableRange 0 0", "AcceptTrack c",
                            "AcceptTrack c", "PlayingRange 0 0"));
}

TEST_F(RTSPSwitchTest, TheSameURLIsSwitchedToAsWell) {
    Start(R"(
        > PLAY clip 5 | Session: 5 | Require: 3gpp-switch-req-sdp | SDP-Requested: 1 | Range: npt=1.500000-
        < 200 5 | RTP-Info: url=r/video | SDP - video audio
    )");
    Switch("clip");
    EXPECT_THAT(Reported("Sending RTSP TEARDOWN"), ElementsAre());
}

TEST_F(RTSPSwitchTest, WithoutANewDescriptionTheOldOneHolds) {
    Start(kSwitchingPlay + std::string("< 200 5 | RTP-Info: url=r/video"));
    Switch();
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("video: Flush", "audio: Flush", "Reset", "SelectTracks video audio", "AvailableRange 0 20",
                            "AcceptTrack video", "AcceptTrack audio", "PlayingRange 0 20"));
    EXPECT_EQ(URL("other/audio"), mHandler.mAccepted[3]->Get("URL"));
}

TEST_F(RTSPSwitchTest, TheWayForMediaIsOpenedAgain) {
    for (const bool lIsPipelined : {false, true}) {
        mReports.Clear();
        Serve(std::string(R"(
            > DESCRIBE clip 1
            < 200 1 | Supported: 3gpp-switch-req-sdp)") +
              (lIsPipelined ? ",3gpp-pipelined | SDP clip/ video\n" : " | SDP clip/ video\n") +
              (lIsPipelined ? "> SETUP clip/video 2\n> PLAY clip 3\n< 200 2 | Session: 5 | UDP 0\n"
                            : "> SETUP clip/video 2\n< 200 2 | Session: 5 | UDP 0\n> PLAY clip 3\n") +
              R"(
            < 200 3 | RTP-Info: url=r/video
            > PLAY other 4 | Session: 5 | Require: 3gpp-switch-req-sdp | SDP-Requested: 1 | Range: npt=0.000000-
            < 200 4 | RTP-Info: url=r/video | SDP - video
        )");
        mServer->Set("client_port0", "7");  // no matter which
        MediaPlayer lPlayer;
        lPlayer.Play(URL(), Time(0));
        const auto lPunched = [this] { return Reported("Punching a hole").size() / 2; };
        EXPECT_EQ(1U, lPunched());
        mReports.Clear();
        lPlayer.Play(URL("other"), Time(0));
        EXPECT_EQ(lIsPipelined ? 1U : 2U, lPunched()) << "before the PLAY only when nothing is pipelined";
        EXPECT_EQ("", mServer->Failure());
    }
}

using Texts = std::vector<std::string>;

struct NoSwitch {
    const char* mName;
    const char* mResponse;
    /// What the handler hears before the session ends, and the errors reported.
    Texts mBegun;
    Texts mErrors;
};

void PrintTo(const NoSwitch& aCase, std::ostream* aOut) {
    *aOut << aCase.mName;
}

class RTSPNoSwitchTest : public RTSPSwitchTest, public testing::WithParamInterface<NoSwitch> {};

TEST_P(RTSPNoSwitchTest, IsSetUpAnew) {
    mHandler.mRefused = {"refused"};
    Start(std::string(kSwitchingPlay) + GetParam().mResponse + kSetUpAnew);
    Switch();
    Texts lExpected = GetParam().mBegun;
    for (const char* lCall : {"SelectTracks video", "AvailableRange 0 9", "AcceptTrack video", "video: Flush",
                              "PlayingRange 0 9", "video: State=WaitData"}) {
        lExpected.push_back(lCall);
    }
    EXPECT_EQ(lExpected, mHandler.TakeCalls());
    EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped", "WaitData"));
    EXPECT_EQ(GetParam().mErrors, mReports.Errors());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RTSPNoSwitchTest,
    testing::Values(
        NoSwitch{"FewerTracks",
                 "< 200 5 | RTP-Info: url=r/video | SDP - video",
                 {"video: Flush", "audio: Flush", "video: State=Stopped", "audio: State=Stopped", "Reset"},
                 {}},
        NoSwitch{"MoreTracks",
                 "< 200 5 | RTP-Info: url=r/video | SDP - video audio text",
                 {"video: Flush", "audio: Flush", "video: State=Stopped", "audio: State=Stopped", "Reset"},
                 {}},
        NoSwitch{"NoCounterpart",
                 "< 200 5 | RTP-Info: url=r/video | SDP - video text",
                 {"video: Flush", "audio: Flush", "Reset", "SelectTracks video text", "AvailableRange 0 0",
                  "AcceptTrack video", "video: State=Stopped", "audio: State=Stopped", "Reset"},
                 {}},
        NoSwitch{"NoDepacketizer",
                 "< 200 5 | RTP-Info: url=r/video | SDP - audio@b:0:8000:PCMU video@a",
                 {"video: Flush", "audio: Flush", "Reset", "SelectTracks b a", "AvailableRange 0 0", "AcceptTrack a",
                  "a: State=Stopped", "audio: State=Stopped", "Reset"},
                 {}},
        NoSwitch{"NoConsumer",
                 "< 200 5 | RTP-Info: url=r/video | SDP - video@refused audio",
                 {"video: Flush", "audio: Flush", "Reset", "SelectTracks refused audio", "AvailableRange 0 0",
                  "AcceptTrack refused", "video: State=Stopped", "audio: State=Stopped"},
                 {}},
        NoSwitch{"Refused",
                 "< 404 5",
                 {"video: State=Stopped", "audio: State=Stopped", "Reset"},
                 {"Got RTSP response: 404 Not Found", "RTSP::DoPlay(): Switching PLAY failed: 404 Not Found"}},
        NoSwitch{"WithoutRTPInfo",
                 "< 200 5 | SDP - video audio",
                 {"video: State=Stopped", "audio: State=Stopped", "Reset"},
                 {"RTSP::RecvPlay(): Invalid PLAY response: RTP-Info missing"}},
        NoSwitch{"NoDescription",
                 "S: RTSP/1.0 200 OK\nS: CSeq: 5\nS: RTP-Info: url=r/a\nS: Content-Length: {length}\nS:\nS| x=0",
                 {"video: State=Stopped", "audio: State=Stopped", "Reset"},
                 {"ParseSDP(): Bad SDP syntax"}},
        NoSwitch{"NoMedia",
                 "< 200 5 | RTP-Info: url=r/a | SDP -",
                 {"video: State=Stopped", "audio: State=Stopped", "Reset"},
                 {"RTSP::HandleSDP(): Invalid or incomplete SDP"}},
        NoSwitch{"AnotherRequestAnswered",
                 "< 200 4 | RTP-Info: url=r/a | SDP - video audio\nEND\nACCEPT",
                 {"video: State=Stopped", "audio: State=Stopped", "Reset"},
                 {"RTSP::RecvResponse(): Invalid response: CSeq mismatch"}}),
    [](const auto& aInfo) { return std::string(aInfo.param.mName); });

const char* const kRefused = "< 404 5";

TEST_F(RTSPSwitchTest, TheSessionIsGivenUpThoughTheTeardownIsRefused) {
    Start(kSwitchingPlay + std::string(kRefused) + R"(
        > TEARDOWN other 6 | Session: 5
        < 459 6
        > DESCRIBE other 7
        < 200 7 | SDP other/ video
        > SETUP other/video 8 | TCP 0
        < 200 8 | Session: 6 | TCP 0
        > PLAY other 9 | Session: 6 | Range: npt=1.500000-
        < 200 9 | RTP-Info: url=r/video
    )");
    Switch();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped", "WaitData"));
}

TEST_F(RTSPSwitchTest, SettingUpAnewConnectsAgainWhenTheServerCloses) {
    Start(kSwitchingPlay + std::string(kRefused) + R"(
        > TEARDOWN other 6 | Session: 5
        < 200 6 | Connection: close
        END
        ACCEPT
        > DESCRIBE other 7
        < 200 7 | SDP other/ text
    )");
    mReports.Clear();
    Switch();
    const auto lReports = mReports.Messages(Severity::Info);
    const auto lConnected = std::find(lReports.begin(), lReports.end(), "Connected to IP: 127.0.0.1");
    ASSERT_NE(lReports.end(), lConnected);
    EXPECT_EQ("RTSP: State -> Stopped", lConnected[1]) << "at once, not when the next request needs it";
}

TEST_F(RTSPSwitchTest, AServerThatEndsInsteadOfAnsweringIsSetUpAnew) {
    Start(kSwitchingPlay + std::string(R"(
        CLOSE
        ACCEPT
        > TEARDOWN other 6 | Session: 5
        < 454 6
        > DESCRIBE other 7
        < 200 7 | SDP other/ text
    )"));
    Switch();
    EXPECT_EQ(1U, mReports.Count(Severity::Error, "RTSP::DoPlay(): Switching PLAY failed: 000 Unknown"));
}

TEST_F(RTSPSwitchTest, SettingUpAnewIsPipelinedWhereThatIsSupported) {
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-pipelined, 3gpp-switch-req-sdp | SDP clip/ video
        > SETUP clip/video 2 | Pipelined-Requests: 00000001 | TCP 0
        > PLAY clip 3 | Require: 3gpp-pipelined | Pipelined-Requests: 00000001 | Range: npt=1.500000-
        < 200 2 | Session: 5
        < 200 3 | RTP-Info: url=r/video
        > PLAY other 4 | Session: 5 | Require: 3gpp-switch-req-sdp | SDP-Requested: 1 | Range: npt=1.500000-
        < 200 4 | RTP-Info: url=r/video | SDP - video video
        > TEARDOWN other 5 | Session: 5
        < 200 5
        > DESCRIBE other 6
        < 200 6 | SDP other/ video
        > SETUP other/video 7 | Pipelined-Requests: 00000002 | TCP 0
        > PLAY other 8 | Require: 3gpp-pipelined | Pipelined-Requests: 00000002 | Range: npt=1.500000-
        < 200 7 | Session: 6
        < 200 8 | RTP-Info: url=r/video
    )");
    Switch("clip");
    Switch();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped", "WaitData"));
    EXPECT_THAT(mReports.Errors(), IsEmpty());
}

TEST_F(RTSPSwitchTest, WhatFailsWhileSettingUpAnewIsThrown) {
    Start(kSwitchingPlay + std::string(R"(
        < 200 5 | RTP-Info: url=r/video | SDP - video
        > TEARDOWN other 6 | Session: 5
        < 200 6
        > DESCRIBE other 7
        < 404 7
        // What came with the switching PLAY is no description to set up from.
        > DESCRIBE other 8
        < 200 8 | SDP other/ video
        > SETUP other/video 9 | TCP 0
        < 200 9 | Session: 6
        > PLAY other 10 | Session: 6 | Range: npt=1.500000-
        < 500 10
    )"));
    ExpectThrows<RTSPErr>(0x404, "RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found", [this] { Switch(); });
    ExpectThrows<RTSPErr>(0x500, "RTSP::DoPlay(): PLAY failed: 500 Internal Server Error", [this] { Switch(); });
}

TEST_F(RTSPSwitchTest, AfterAStopTheSwitchIsForgotten) {
    Start(R"(
        > TEARDOWN clip 5 | Session: 5
        < 200 5
        END
        ACCEPT
        > DESCRIBE other 1
        < 200 1 | SDP other/ video
        > SETUP other/video 2 | TCP 0
        < 200 2 | Session: 6
        > PLAY other 3 | Session: 6 | Range: npt=1.500000-
        < 200 3 | RTP-Info: url=r/video
        > TEARDOWN other 4 | Session: 6
        < 200 4
        > DESCRIBE third 5
        < 200 5 | SDP third/ text
    )");
    mHandler.Stop();
    Switch();
    Switch("third");
}

}  // namespace
}  // namespace Player::MediaSessions
