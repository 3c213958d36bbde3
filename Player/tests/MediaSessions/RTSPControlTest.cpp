#include <thread>

#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;
using TestSupport::RtpPacket;

/// Pause, resume and seek of a presentation of one track over UDP, of which no media has come yet.
class RTSPControlTest : public SessionTest {
protected:
    void Start(const std::string& aDialogue) {
        Serve(R"(
            > DESCRIBE clip 1
            < 200 1 | SDP clip/ video range=0-20
            > SETUP clip/video 2 | UDP 0
            < 200 2 | Session: 5 | UDP 0
            > PLAY clip 3
            < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-20
        )" + aDialogue);
        mHandler.Play(URL(), Time(0));
        mHandler.TakeCalls();
    }
    /// A whole access unit, so many seconds after the start.
    void Send(unsigned aSeq, unsigned aSeconds) {
        mServer->Media(0).SendRtp(
            RtpPacket().Seq(aSeq).Timestamp(90000 * (1 + aSeconds)).Marker().Payload({0x65}).Build());
    }
    std::vector<std::string> StatesAndSends() const {
        std::vector<std::string> lFound;
        for (const auto& lReport : mReports.Messages(Severity::Info)) {
            for (const std::string lPrefix : {"RTSP: State -> ", "Sending RTSP ", "Punching a hole "}) {
                if (0 == lReport.compare(0, lPrefix.size(), lPrefix)) {
                    lFound.push_back(
                        lReport.substr(lPrefix.size(), lReport.find(' ', lPrefix.size()) - lPrefix.size()));
                }
            }
        }
        return lFound;
    }
};

const char* const kPause = R"(
    > PAUSE clip 4 | Session: 5
    < 200 4
)";

const char* const kResume = R"(
    > PLAY clip 5 | Session: 5
    < 200 5 | RTP-Info: url=r/video;seq=2;rtptime=90000
)";

TEST_F(RTSPControlTest, OnlyWhatIsActiveIsPaused) {
    Start(kPause + std::string(R"(
        > TEARDOWN clip 5
        < 200 5
    )"));
    mHandler.Pause();
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Paused"));
    mHandler.Pause();
    mHandler.Stop();
    mHandler.Pause();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Paused", "Stopped"));
}

TEST_F(RTSPControlTest, EveryActiveStateIsPaused) {
    Start(R"(
        > PAUSE clip 4
        < 200 4
        > PLAY clip 5
        < 200 5 | RTP-Info: url=r/video
        > PAUSE clip 6
        < 200 6
        > PLAY clip 7
        < 200 7 | RTP-Info: url=r/video
        > PAUSE clip 8
        < 200 8
    )");
    mHandler.Pause();
    mHandler.Resume();
    Send(1, 0);
    EXPECT_FALSE(mHandler.Fill(0));
    mHandler.Pause();
    mHandler.Resume();
    Send(2, 5);
    EXPECT_TRUE(mHandler.Fill(0));
    mHandler.Pause();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Paused", "WaitData", "Buffering", "Paused", "WaitData", "Buffering",
                                      "Playing", "Paused"));
}

TEST_F(RTSPControlTest, APauseAtTheEndStops) {
    Start(kPause);
    // What tells that the end is reached has arrived and is not read yet.
    Send(1, 20);
    mHandler.Pause();
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Paused", "video: State=Stopped"));
}

TEST_F(RTSPControlTest, APauseBeforeTheEndTakesInWhatHasArrived) {
    Start(kPause);
    Send(1, 15);
    mHandler.Pause();
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Paused"));
}

TEST_F(RTSPControlTest, ARefusedPauseChangesNothing) {
    Start(R"(
        > PAUSE clip 4
        < 454 4
        > PAUSE clip 5
        < 200 5
    )");
    ExpectThrows<RTSPErr>(0x454, "RTSP::DoPlay(): PAUSE failed: 454 Session Not Found", [this] { mHandler.Pause(); });
    EXPECT_THAT(States(), ElementsAre("WaitData"));
    mHandler.Pause();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Paused"));
}

TEST_F(RTSPControlTest, ResumeGoesOnFromWhereItPaused) {
    Start(kPause + std::string(R"(
        > PLAY clip 5 | Session: 5
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=450000 | Range: npt=5-6
    )"));
    Send(1, 0);
    mHandler.Pause();
    Send(2, 1);
    mReports.Clear();
    mHandler.TakeCalls();
    mHandler.Resume();
    EXPECT_THAT(StatesAndSends(), ElementsAre("to", "to", "PLAY", "WaitData")) << "the ways for media are opened first";
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=WaitData")) << "nothing is flushed, no range is told";
    mHandler.Resume();

    // What came before is still there, and what comes now follows it.
    Send(11, 4);
    EXPECT_FALSE(mHandler.Fill(0));
    Send(12, 7);
    EXPECT_TRUE(mHandler.Fill(0));
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(mHandler.Fetch(0)) << i;
    }
    EXPECT_FALSE(mHandler.Fetch(0));
}

// All that will be played is queued: the server sends nothing any more but, at best, that it has ended.
TEST_F(RTSPControlTest, AResumeWithoutNewMediaPlaysWhatIsQueued) {
    for (const bool lIsProduced : {false, true}) {
        Start(kPause + std::string(kResume));
        Send(1, 0);
        mHandler.Pause();
        mHandler.Resume();
        EXPECT_FALSE(mHandler.Produce(0)) << "more may come";
        EXPECT_FALSE(mHandler.Fill(0));
        mHandler.TakeCalls();
        mServer->Media(0).SendRtcp(TestSupport::RtcpCompound(0).RR().BYE().Build());
        EXPECT_TRUE(lIsProduced ? mHandler.Produce(0) : mHandler.Fill(0));
        EXPECT_NE(lIsProduced, mHandler.Fetch(0));
        EXPECT_FALSE(mHandler.Produce(0));
        EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Buffering", "video: State=Playing", "video: sample",
                                                      "video: EndOfStream=Bye"));
        mServer.reset();
        mHandler.SetConfigParam("RTSP:TimeOutAfter", "1");
        EXPECT_THROW(mHandler.Close(), NetworkErr);
    }
}

TEST_F(RTSPControlTest, ASilentServerDoesNotKeepBackWhatIsQueued) {
    mHandler.SetConfigParam("RTSP:TimeOutRTPAfter", "1");
    Start(kPause + std::string(kResume));
    Send(1, 0);
    mHandler.Pause();
    mHandler.Resume();
    mHandler.TakeCalls();
    for (int lTry = 0; !mHandler.Produce(0) && lTry < 500; ++lTry) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_FALSE(mHandler.Produce(0));
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Buffering", "video: State=Playing", "video: sample",
                                                  "video: EndOfStream=Timeout"));
}

/// Within the RTSP connection, from a server whose media is played as it comes; silence ends it after a second.
class RTSPLongPauseTest : public SessionTest {
protected:
    void StartAndPause(const std::string& aDialogue) {
        Interleave();
        mHandler.SetConfigParam("RTSP:TimeOutRTPAfter", "1");
        Serve(R"(
            > DESCRIBE clip 1
            < 200 1 | Server: Quenra Strand | SDP clip/ video range=0-20
            > SETUP clip/video 2 | TCP 0
            < 200 2 | Session: 5 | TCP 0
            > PLAY clip 3
            < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=1 | Range: npt=0-20
            S$ 0 {first}
            > PAUSE clip 4
            < 200 4
        )" + aDialogue);
        mServer->Set("first", Packet(1));
        mServer->Set("second", Packet(2));
        mHandler.Play(URL(), Time(0));
        EXPECT_TRUE(mHandler.Produce(0));
        mHandler.Pause();
        mHandler.TakeCalls();
        std::this_thread::sleep_for(std::chrono::milliseconds(1050));
    }
    static std::string Packet(unsigned aSeq) {
        return TestSupport::Hex(RtpPacket().Seq(aSeq).Timestamp(aSeq).Marker().Payload({0x65}).Build());
    }
};

TEST_F(RTSPLongPauseTest, TheTimeOutStartsAnewWithAResume) {
    StartAndPause("> PLAY clip 5 | Session: 5\n< 200 5 | RTP-Info: url=r/video;seq=2;rtptime=2\nS$ 0 {second}");
    mHandler.Resume();
    EXPECT_TRUE(mHandler.Produce(0));
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=WaitData", "video: State=Buffering",
                                                  "video: State=Playing", "video: sample"));
}

TEST_F(RTSPLongPauseTest, TheTimeOutStartsAnewWithASeek) {
    StartAndPause("> PLAY clip 5\n< 200 5 | RTP-Info: url=r/video;seq=2;rtptime=2\nS$ 0 {second}");
    mHandler.Seek(Time(1, 1));
    EXPECT_TRUE(mHandler.Produce(0));
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: Flush", "PlayingRange 0 20", "video: State=WaitData",
                                                  "video: State=Buffering", "video: State=Playing", "video: sample"));
}

TEST_F(RTSPControlTest, AnAnswerThatComesTwiceCostsOneRequestOnly) {
    Start(kPause + std::string(R"(
        < 200 4
        > PLAY clip 5 | Session: 5
        < 200 5 | RTP-Info: url=r/video;seq=2;rtptime=90000
        END
        ACCEPT
        > PLAY clip 6 | Session: 5
        < 200 6 | RTP-Info: url=r/video;seq=2;rtptime=90000
    )"));
    mHandler.Pause();
    ExpectThrows<RTSPErr>(2, "RTSP::RecvResponse(): Invalid response: CSeq mismatch", [this] { mHandler.Resume(); });
    EXPECT_EQ("Paused", States().back());
    mHandler.Resume();
    EXPECT_EQ("WaitData", States().back());
}

TEST_F(RTSPControlTest, ARefusedResumeStaysPaused) {
    Start(kPause + std::string(R"(
        > PLAY clip 5
        < 459 5
        > PLAY clip 6
        < 200 6 | Range: npt=0-
        > PLAY clip 7
        < 200 7 | RTP-Info:
    )"));
    mHandler.Pause();
    ExpectThrows<RTSPErr>(0x459, "RTSP::DoPlay(): Resuming PLAY failed: 459 Aggregate Operation Not Allowed",
                          [this] { mHandler.Resume(); });
    ExpectThrows<RTSPErr>(2, "RTSP::DoResume(): Invalid PLAY response: RTP-Info missing",
                          [this] { mHandler.Resume(); });
    EXPECT_THAT(States(), ElementsAre("WaitData", "Paused"));
    mHandler.Resume();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Paused", "WaitData"));
}

TEST_F(RTSPControlTest, AfterTheEndWhatIsQueuedIsPlayed) {
    Start(kPause);
    Send(1, 20);
    mHandler.Pause();
    mHandler.TakeCalls();
    mHandler.Resume();
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Playing"));
    EXPECT_TRUE(mHandler.Produce(0));
    EXPECT_FALSE(mHandler.Produce(0));
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: sample", "video: EndOfStream=EndTime"));
}

TEST_F(RTSPControlTest, AfterTheEndThereIsNothingToResume) {
    Start(R"(
        > PAUSE clip 4
        < 200 4
    )");
    const auto lExpectEnded = [this] {
        ExpectThrows<RTSPErr>(18, "RTSP::Resume(): Clip has ended", [this] { mHandler.Resume(); });
    };
    Send(1, 20);
    EXPECT_TRUE(mHandler.Fill(0));
    EXPECT_TRUE(mHandler.Fetch(0));
    mHandler.Pause();
    lExpectEnded();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing", "Paused", "Stopped"));
    // What arrives late is media as well.
    Send(2, 21);
    mHandler.Resume();
    EXPECT_EQ("Playing", States().back());
}

TEST_F(RTSPControlTest, WithoutATransportThereIsNothingToResume) {
    Start("> TEARDOWN clip 4\n< 200 4");
    mHandler.Stop();
    ExpectThrows<RTSPErr>(18, "RTSP::Resume(): Clip has ended", [this] { mHandler.Resume(); });
}

TEST_F(RTSPControlTest, ASeekWhilePlayingPausesFirst) {
    Start(R"(
        > PAUSE clip 4 | Session: 5
        < 200 4
        > PLAY clip 5 | Session: 5 | Range: npt=12.500000-
        < 200 5 | RTP-Info: url=r/video;seq=100;rtptime=900000 | Range: npt=12-19
    )");
    Send(1, 0);
    mReports.Clear();
    mHandler.Seek(Time(25, 2));
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("video: State=Paused", "video: Flush", "PlayingRange 12 19", "video: State=WaitData"));
    EXPECT_THAT(StatesAndSends(), ElementsAre("PAUSE", "Paused", "to", "to", "PLAY", "WaitData"));
    EXPECT_FALSE(mHandler.Fill(0)) << "what was received before the seek is gone";
    EXPECT_EQ("WaitData", States().back());
}

TEST_F(RTSPControlTest, ASeekWhilePausedOrAtTheEndOnlyPlays) {
    Start(kPause + std::string(R"(
        > PLAY clip 5 | Session: 5 | Range: npt=1.000000-
        < 200 5 | RTP-Info: url=r/video | Range: npt=1-2
        > PAUSE clip 6
        < 200 6
        > PLAY clip 7 | Session: 5 | Range: npt=0.000000-
        < 200 7 | RTP-Info: url=r/video
    )"));
    mHandler.Pause();
    mHandler.Seek(Time(1, 1));
    Send(1, 5);
    mHandler.Pause();
    EXPECT_EQ("Stopped", States().back());
    mHandler.Seek(Time(0));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Paused", "WaitData", "Paused", "Stopped", "WaitData"));
}

TEST_F(RTSPControlTest, ARefusedSeekStaysPaused) {
    Start(kPause + std::string(R"(
        > PLAY clip 5
        < 500 5
        > PLAY clip 6
        < 200 6 | Range: npt=0-
    )"));
    ExpectThrows<RTSPErr>(0x500, "RTSP::DoPlay(): Seeking PLAY failed: 500 Internal Server Error",
                          [this] { mHandler.Seek(Time(0)); });
    ExpectThrows<RTSPErr>(2, "RTSP::RecvPlay(): Invalid PLAY response: RTP-Info missing",
                          [this] { mHandler.Seek(Time(0)); });
    EXPECT_THAT(States(), ElementsAre("WaitData", "Paused"));
}

TEST_F(RTSPControlTest, ASeekDoesNotStartWhenThePauseIsRefused) {
    Start("> PAUSE clip 4\n< 459 4");
    ExpectThrows<RTSPErr>(0x459, "RTSP::DoPlay(): PAUSE failed: 459 Aggregate Operation Not Allowed",
                          [this] { mHandler.Seek(Time(0)); });
}

TEST_F(RTSPControlTest, ASeekLeavesBehindWhatCameWhilePaused) {
    Start(kPause + std::string(R"(
        > PLAY clip 5
        < 200 5 | RTP-Info: url=r/video
    )"));
    mHandler.Pause();
    Send(1, 0);
    mHandler.Seek(Time(5, 1));
    EXPECT_FALSE(mHandler.Fill(0));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Paused", "WaitData"));
}

TEST_F(RTSPControlTest, ARangeInOtherUnitsLeavesTheTimesAlone) {
    Start(kPause + std::string(R"(
        > PLAY clip 5
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=90000 | Range: clock=19961108T142300Z-
        > PAUSE clip 6
        < 200 6
    )"));
    mHandler.Seek(Time(5, 1));
    EXPECT_THAT(mHandler.TakeCalls(), testing::Contains("PlayingRange 0 20"));
    Send(10, 20);
    mHandler.Pause();
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Paused", "video: State=Stopped")) << "it has its end";
}

TEST_F(RTSPControlTest, WhatWasSetUpInPartIsNotSought) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2
        < 500 2
    )");
    EXPECT_THROW(Play(), RTSPErr);
    ExpectThrows<SystemErr>(1, "RTSP::Seek(): No valid media session", [this] { mPlayer.Seek(Time(0)); });
}

TEST_F(RTSPControlTest, NeitherIsWhatHasItsLastSetupRefused) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2
        < 200 2 | Session: 5
        > SETUP clip/audio 3
        < 500 3
    )");
    EXPECT_THROW(Play(), RTSPErr);
    ExpectThrows<SystemErr>(1, "RTSP::Seek(): No valid media session", [this] { mPlayer.Seek(Time(0)); });
}

TEST_F(RTSPControlTest, WithoutTracksThereIsNothingToSeek) {
    Start("> TEARDOWN clip 4\n< 200 4");
    mHandler.Stop();
    ExpectThrows<SystemErr>(1, "RTSP::Seek(): No valid media session", [this] { mHandler.Seek(Time(0)); });
}

TEST_F(RTSPControlTest, AClosedConnectionIsOpenedAgainForTheNextRequest) {
    Start(R"(
        CLOSE
        NOTIFY closed
        ACCEPT
        > PAUSE clip 4 | Session: 5
        < 200 4
    )");
    ASSERT_TRUE(mServer->Await("closed"));
    mHandler.Pause();
}

class RTSPTeardownTest : public RTSPControlTest {
protected:
    /// Ends the presentation with `Close`; afterwards the next one is played over a connection of its own.
    void StartAndClose(const std::string& aTeardown, const std::function<void()>& aClose) {
        Start(aTeardown + R"(
            ACCEPT
            > DESCRIBE clip 1
            < 200 1 | SDP clip/ text
        )");
        aClose();
        EXPECT_EQ("Stopped", States().back());
        mHandler.Play(URL(), Time(0));
    }
};

TEST_F(RTSPTeardownTest, StopKeepsTheConnection) {
    Start(R"(
        > TEARDOWN clip 4 | Session: 5
        < 200 4
        AWAIT stopped
        // Without a client the first bytes would be answered with a reset, and the second could not be sent.
        S~ x
        NOTIFY once
        S~ y
        NOTIFY twice
    )");
    mHandler.Stop();
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Stopped"));
    mHandler.Stop();
    mServer->Notify("stopped");
    EXPECT_TRUE(mServer->Await("twice"));
    EXPECT_EQ(1U, Reported("Sending RTSP TEARDOWN").size());
    EXPECT_EQ(1U, mReports.Count(Severity::Info, "Sending RTSP TEARDOWN for URL: " + URL() + " "));
}

TEST_F(RTSPTeardownTest, CloseDropsTheConnection) {
    StartAndClose("> TEARDOWN clip 4 | Session: 5\n< 200 4\nEND\nNOTIFY ended", [this] {
        mHandler.Close();
        EXPECT_TRUE(mServer->Await("ended"));
        mHandler.Close();
    });
}

TEST_F(RTSPTeardownTest, CloseDropsTheConnectionThoughRefused) {
    StartAndClose("> TEARDOWN clip 4\n< 454 4\nEND\nNOTIFY ended", [this] {
        mHandler.Close();
        EXPECT_TRUE(mServer->Await("ended"));
    });
}

TEST_F(RTSPTeardownTest, CloseDropsTheConnectionThoughItThrows) {
    StartAndClose("> TEARDOWN clip 4\n< 200 5\nEND\nNOTIFY ended", [this] {
        ExpectThrows<RTSPErr>(2, "RTSP::RecvResponse(): Invalid response: CSeq mismatch", [this] { mHandler.Close(); });
        EXPECT_TRUE(mServer->Await("ended"));
    });
}

TEST_F(RTSPTeardownTest, CloseEndsThoughTheServerStaysSilent) {
    StartAndClose("> TEARDOWN clip 4\nEND", [this] {
        mHandler.SetConfigParam("RTSP:TimeOutAfter", "1");
        EXPECT_THROW(mHandler.Close(), NetworkErr);
    });
}

TEST_F(RTSPTeardownTest, AfterAStopTheServerMayCloseToo) {
    StartAndClose("> TEARDOWN clip 4\n< 200 4 | Connection: close, x\nEND\nNOTIFY ended", [this] {
        mHandler.Stop();
        EXPECT_TRUE(mServer->Await("ended"));
        EXPECT_THAT(Reported("Connecting"), testing::SizeIs(1)) << "nothing is asked of the server yet";
    });
}

TEST_F(RTSPTeardownTest, AStopThatIsRefusedStopsAllTheSame) {
    Start(R"(
        > TEARDOWN clip 4 | Session: 5
        < 459 4 | Connection: close
        // The session is still there, but not what it was for.
        C: TEARDOWN  RTSP/1.0
        C: CSeq: 1
        C...
        < 454 1
        END
        ACCEPT
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ text
    )");
    mHandler.Stop();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped"));
    mHandler.Play(URL(), Time(0));
}

TEST_F(RTSPTeardownTest, AStopThatThrowsStopsAllTheSame) {
    Start("> TEARDOWN clip 4 | Session: 5\n< 200 5");
    ExpectThrows<RTSPErr>(2, "RTSP::RecvResponse(): Invalid response: CSeq mismatch", [this] { mHandler.Stop(); });
    EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped"));
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Stopped"));
}

TEST_F(RTSPTeardownTest, WhatTheServerCanDoIsForgottenWithIt) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Server: Quenra Strand | Supported: 3gpp-pipelined | SDP clip/ text
        END
        ACCEPT
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5
        > PLAY clip 3 | Session: 5 | Range: npt=0.000000-
        < 200 3 | RTP-Info: url=r/video
    )");
    mHandler.Play(URL(), Time(0));
    mHandler.Close();
    mHandler.Play(URL(), Time(0));
    Send(1, 0);
    EXPECT_FALSE(mHandler.Fill(0)) << "it is buffered first";
}

TEST_F(RTSPTeardownTest, NumbersStartAnewAfterAStop) {
    Interleave();
    const std::string kPipelined = R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-pipelined | SDP clip/ video
        > SETUP clip/video 2 | Pipelined-Requests: 00000001 | TCP 0
        > PLAY clip 3
        < 200 2 | Session: 5
        < 200 3 | RTP-Info: url=r/video
    )";
    Serve(kPipelined + R"(
        > TEARDOWN clip 4
        < 200 4
        > DESCRIBE clip 5
        < 200 5 | SDP clip/ video
        > SETUP clip/video 6 | Pipelined-Requests: 00000002 | TCP 0
        > PLAY clip 7
        < 200 6 | Session: 6
        < 200 7 | RTP-Info: url=r/video
        > TEARDOWN clip 8 | Session: 6
        < 200 8
        END
        ACCEPT
    )" + kPipelined);
    Play();
    Play();
    mPlayer.Stop();
    Play();
}

}  // namespace
}  // namespace Player::MediaSessions
