#include <poll.h>

#include <cstdlib>

#include "MediaSessions/SessionFixture.hpp"
#include "Player/String.hpp"
#include "Sockets/Loopback.hpp"
#include "support/ClockUnderTest.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;
using TestSupport::RtpPacket;

constexpr UInt kVideo = 0;
constexpr UInt kAudio = 1;
constexpr std::uint32_t kTicks[] = {90000, 8000};
constexpr std::uint32_t kTimeBase = 1000;
constexpr std::uint32_t kSSRC = 7;

/// Two tracks over UDP, of which three seconds are to be buffered.
class RTSPPlayStateTest : public SessionTest {
protected:
    std::string StartDialogue(const std::string& aServer = "any") {
        return R"(
            > DESCRIBE clip 1
            < 200 1 | Server: )" +
               aServer + R"( | SDP clip/ video audio range=0-20
            > SETUP clip/video 2 | UDP 0
            < 200 2 | Session: 5 | UDP 0
            > SETUP clip/audio 3 | Session: 5 | UDP 1
            < 200 3 | UDP 1
            > PLAY clip 4
            < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=1000,url=r/audio;seq=1;rtptime=1000 | Range: npt=0-20
        )";
    }
    void Start(const std::string& aServer = "any") {
        Serve(StartDialogue(aServer));
        Play();
    }

    /// A whole access unit so many clock ticks after the start of the presentation.
    void Send(TrackIdx aTrack, unsigned aSeq, std::uint32_t aTicks) {
        const TestSupport::Bytes lFrames = {0xf0, 0x44, 1, 2, 3, 4, 5};  // one AMR frame of 5 bytes
        mServer->Media(aTrack).SendRtp(RtpPacket()
                                           .Type(kVideo == aTrack ? 96 : 97)
                                           .Seq(aSeq)
                                           .Timestamp(kTimeBase + aTicks)
                                           .Ssrc(kSSRC)
                                           .Marker()
                                           .Payload(kVideo == aTrack ? TestSupport::Bytes{0x65, 1} : lFrames)
                                           .Build());
    }
    void SendGoodbye(TrackIdx aTrack) {
        mServer->Media(aTrack).SendRtcp(TestSupport::RtcpCompound(kSSRC).RR().BYE().Build());
    }
    bool TakesPacket(TrackIdx aTrack) { return nullptr != mPlayer.GetTrackPacket(aTrack).Ptr(); }
};

TEST_F(RTSPPlayStateTest, WaitsForDataThenBuffersThenPlays) {
    Start();
    EXPECT_FALSE(mPlayer.TrackHasPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData"));

    Send(kVideo, 1, 0);
    EXPECT_FALSE(mPlayer.TrackHasPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering"));

    Send(kVideo, 2, 3 * kTicks[kVideo]);
    EXPECT_FALSE(mPlayer.TrackHasPacket(kVideo)) << "exactly the target is not enough";
    EXPECT_FALSE(mPlayer.Fill(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering"));

    Send(kVideo, 3, 3 * kTicks[kVideo] + 1);
    EXPECT_TRUE(mPlayer.TrackHasPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));

    // Once it plays, what is there is handed out, one access unit a time, whatever is left.
    EXPECT_EQ(Time(3 * kTicks[kVideo] + 1, kTicks[kVideo]), mPlayer.TrackLatestTime(kVideo));
    EXPECT_EQ(Time(0), TakeSample(kVideo));
    EXPECT_EQ(Time(1, kTicks[kVideo]), mPlayer.GetTrackReception(kVideo).mBufferedTime);
    EXPECT_EQ(Time(3, 1), TakeSample(kVideo));
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_FALSE(TakesPacket(kVideo));
    Send(kVideo, 4, 4 * kTicks[kVideo]);
    EXPECT_EQ(Time(4, 1), TakeSample(kVideo));
    Send(kAudio, 1, 0);
    EXPECT_TRUE(TakesPacket(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
}

TEST_F(RTSPPlayStateTest, DataOfAnyTrackEndsTheWaitingOfAll) {
    Start();
    Send(kVideo, 1, 0);
    EXPECT_FALSE(mPlayer.TrackHasPacket(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering"));
}

/// Pausing a presentation of which one track has ended.
class RTSPPauseAtAnEndTest : public RTSPPlayStateTest, public testing::WithParamInterface<TrackIdx> {};

TEST_P(RTSPPauseAtAnEndTest, Stops) {
    Serve(StartDialogue() + "> PAUSE clip 5\n< 200 5\n");
    Play();
    Send(GetParam(), 1, 0);
    SendGoodbye(GetParam());
    mPlayer.Pause();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Paused", "Stopped"));
}

INSTANTIATE_TEST_SUITE_P(Tracks, RTSPPauseAtAnEndTest, testing::Values(kVideo, kAudio));

TEST_F(RTSPPlayStateTest, TheRoundTripIsThatOfTheControlConnection) {
    EXPECT_EQ(Time(0), mPlayer.RoundTrip()) << "none yet";
    Start();
    EXPECT_EQ(Testing::SystemTellsRoundTrips(), Time(0) < mPlayer.RoundTrip());
    EXPECT_LT(mPlayer.RoundTrip(), Time(60, 1));
}

TEST_F(RTSPPlayStateTest, TakesInWithoutDelivering) {
    Start("Quenra Strand");
    Send(kVideo, 1, 0);
    mPlayer.TakeIn();
    EXPECT_THAT(States(), ElementsAre("WaitData")) << "the first media is left to whoever asks for it";
    EXPECT_EQ(0U, mPlayer.GetTrackReception(kVideo).mPacketsReceived);
    EXPECT_TRUE(TakesPacket(kVideo));

    Send(kVideo, 2, 1);
    Send(kAudio, 1, 1);
    mPlayer.TakeIn();
    EXPECT_EQ(2U, mPlayer.GetTrackReception(kVideo).mPacketsReceived);
    EXPECT_EQ(1U, mPlayer.GetTrackReception(kAudio).mPacketsReceived);
    EXPECT_EQ(Time(0), mPlayer.TrackLatestTime(kVideo)) << "nothing is queued for the track";
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_TRUE(TakesPacket(kAudio));
}

TEST_F(RTSPPlayStateTest, TakesInWhileBuffering) {
    Start();
    Send(kVideo, 1, 0);
    EXPECT_FALSE(mPlayer.TrackHasPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering"));
    Send(kVideo, 2, 1);
    Send(kAudio, 1, 1);
    mPlayer.TakeIn();
    EXPECT_EQ(2U, mPlayer.GetTrackReception(kVideo).mPacketsReceived);
    EXPECT_EQ(1U, mPlayer.GetTrackReception(kAudio).mPacketsReceived);

    Send(kVideo, 3, 4 * kTicks[kVideo]);
    mPlayer.TakeIn();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering")) << "that is left to whoever asks for media";
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
}

TEST_F(RTSPPlayStateTest, EveryTrackReportsUnderANumberDrawnForIt) {
    constexpr unsigned kSeed = 4711;
    std::srand(kSeed);
    const std::string lNumbers[] = {StringWithFormat("%08x", std::rand()), StringWithFormat("%08x", std::rand())};
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3
        < 200 3 | TCP 1
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video
        AWAIT plays
        S$ 0 {video}
        S$ 2 {audio}
        S$ 1 {report}
        S$ 3 {report}
        NOTIFY sent
        C$ 1 81 c9 00 07 )" +
          lNumbers[0] + R"( ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ??
        C$ 2 81 c9 00 07 )" +
          lNumbers[1] + " ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ?? ??\n");
    mServer->Set("video", TestSupport::Hex(RtpPacket().Type(96).Seq(1).Ssrc(7).Payload({0x65}).Build()));
    mServer->Set("audio", TestSupport::Hex(RtpPacket().Type(97).Seq(1).Ssrc(7).Payload({0x65}).Build()));
    mServer->Set("report", TestSupport::Hex(TestSupport::RtcpCompound(7).SR(0, 1, 1).Build()));
    std::srand(kSeed);
    Play();
    mServer->Notify("plays");
    ASSERT_TRUE(mServer->Await("sent"));
    EXPECT_FALSE(mPlayer.TrackHasPacket(kVideo)) << "it gathers";
}

TEST_F(RTSPPlayStateTest, TheSameWithinTheConnection) {
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2
        < 200 2 | Session: 5 | TCP 0
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=1000
        AWAIT waits
        S$ 0 {first}
        NOTIFY first
        AWAIT buffers
        S$ 0 {second}
        NOTIFY second
    )");
    const auto lPacket = [](unsigned aSeq, std::uint32_t aTicks) {
        return TestSupport::Hex(RtpPacket().Seq(aSeq).Timestamp(kTimeBase + aTicks).Marker().Payload({0x65}).Build());
    };
    mServer->Set("first", lPacket(1, 0));
    mServer->Set("second", lPacket(2, 3 * kTicks[kVideo] + 1));
    Play();
    EXPECT_TRUE(mPlayer.MediaWaits()) << "for the connection to be read";
    EXPECT_FALSE(TakesPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData"));
    mServer->Notify("waits");
    ASSERT_TRUE(mServer->Await("first"));
    EXPECT_FALSE(TakesPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering"));
    mServer->Notify("buffers");
    ASSERT_TRUE(mServer->Await("second"));
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_FALSE(TakesPacket(kVideo));
}

TEST_F(RTSPPlayStateTest, ProduceDecidesByTheFirstTrack) {
    Start();
    Send(kAudio, 1, 0);
    Send(kAudio, 2, 10 * kTicks[kAudio]);
    EXPECT_FALSE(mPlayer.TrackHasPacket(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering"));
    Send(kVideo, 1, 0);
    Send(kVideo, 2, 4 * kTicks[kVideo]);
    EXPECT_TRUE(mPlayer.TrackHasPacket(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
}

TEST_F(RTSPPlayStateTest, FillDecidesByTheTrackAskedFor) {
    Start();
    EXPECT_FALSE(mPlayer.Fill(kAudio));
    Send(kVideo, 1, 0);
    Send(kAudio, 1, 0);
    EXPECT_FALSE(mPlayer.Fill(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering"));
    Send(kAudio, 2, 3 * kTicks[kAudio]);
    EXPECT_FALSE(mPlayer.Fill(kAudio)) << "exactly the target is not enough";
    Send(kAudio, 3, 4 * kTicks[kAudio]);
    EXPECT_TRUE(mPlayer.Fill(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
    EXPECT_FALSE(mPlayer.Fill(kAudio)) << "nothing new has arrived";
    EXPECT_TRUE(mPlayer.Fill(kVideo));
}

TEST_F(RTSPPlayStateTest, TheTargetIsASetting) {
    for (const auto& [lTarget, lTicks] : {std::pair("0", 0U), std::pair("1", kTicks[kVideo])}) {
        Serve(StartDialogue());
        MediaPlayer lPlayer;
        lPlayer.Play(URL(), Time(0));
        lPlayer.SetConfigParam("RTSP:TargetRTPBuffer", lTarget);
        Send(kVideo, 1, 0);
        if (0 != lTicks) { Send(kVideo, 2, lTicks); }
        EXPECT_FALSE(lPlayer.TrackHasPacket(kVideo)) << lTarget;
        Send(kVideo, 3, lTicks + 1);
        EXPECT_TRUE(lPlayer.TrackHasPacket(kVideo)) << lTarget;
        EXPECT_EQ("", mServer->Failure());
    }
}

TEST_F(RTSPPlayStateTest, AServerOfOurOwnKindIsPlayedAtOnce) {
    Start("foo Quenra Strand/1.0");
    EXPECT_FALSE(TakesPacket(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData"));
    Send(kAudio, 1, 0);
    EXPECT_TRUE(TakesPacket(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
}

TEST_F(RTSPPlayStateTest, AServerOfOurOwnKindIsFilledFromAtOnce) {
    Start("Quenra Strand");
    EXPECT_FALSE(mPlayer.Fill(kVideo));
    Send(kVideo, 1, 0);
    EXPECT_TRUE(mPlayer.Fill(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
}

TEST_F(RTSPPlayStateTest, OnlyTheExactNameIsOurOwnKind) {
    Start("quenra strand");
    Send(kVideo, 1, 0);
    EXPECT_FALSE(mPlayer.Fill(kVideo));
    EXPECT_FALSE(TakesPacket(kVideo));
}

TEST_F(RTSPPlayStateTest, ATrackThatSaysGoodbyeIsPlayedToItsEnd) {
    Start();
    Send(kVideo, 1, 0);
    Send(kVideo, 2, kTicks[kVideo]);
    EXPECT_FALSE(TakesPacket(kVideo));
    SendGoodbye(kVideo);
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_FALSE(mPlayer.IsTrackEnded(kVideo));
    EXPECT_FALSE(TakesPacket(kVideo));
    EXPECT_TRUE(mPlayer.IsTrackEnded(kVideo));
    EXPECT_FALSE(mPlayer.HasTrackTimedOut(kVideo));
    EXPECT_FALSE(mPlayer.IsEnded()) << "there is another track";
    EXPECT_EQ(Reception::End::kBye, mPlayer.GetTrackReception(kVideo).mEnd);
    EXPECT_EQ(Reception::End::kRunning, mPlayer.GetTrackReception(kAudio).mEnd);
}

TEST_F(RTSPPlayStateTest, TheEndOfAnotherTrackDoesNotEndBuffering) {
    Start();
    Send(kVideo, 1, 0);
    Send(kAudio, 1, 0);
    EXPECT_FALSE(TakesPacket(kAudio));
    SendGoodbye(kAudio);
    EXPECT_FALSE(TakesPacket(kAudio));
    EXPECT_FALSE(mPlayer.Fill(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering"));
    EXPECT_TRUE(mPlayer.Fill(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
}

TEST_F(RTSPPlayStateTest, FillPlaysAnEndedTrackOnlyWhenItHadData) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | Transport: RTP/AVP;ssrc=7
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video
    )");
    Play();
    SendGoodbye(kVideo);
    EXPECT_FALSE(mPlayer.Fill(kVideo));
    EXPECT_EQ(Reception::End::kBye, mPlayer.GetTrackReception(kVideo).mEnd);
    EXPECT_FALSE(mPlayer.Fill(kVideo));
    EXPECT_FALSE(TakesPacket(kVideo));
    EXPECT_THAT(States(), ElementsAre("WaitData"));
}

TEST_F(RTSPPlayStateTest, AClipShorterThanTheTargetIsPlayed) {
    Start();
    Send(kVideo, 1, 20 * kTicks[kVideo]);
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_FALSE(TakesPacket(kVideo));
    EXPECT_TRUE(mPlayer.IsTrackEnded(kVideo));
    EXPECT_EQ(Reception::End::kEndTime, mPlayer.GetTrackReception(kVideo).mEnd);
}

TEST_F(RTSPPlayStateTest, ASilentFirstTrackDoesNotHoldUpTheOthersForEver) {
    Testing::ClockUnderTest lClock;
    Start();
    // The setting counts for the tracks that are there.
    mPlayer.SetConfigParam("RTSP:TimeOutRTPAfter", "1");
    Send(kAudio, 1, 0);
    EXPECT_FALSE(TakesPacket(kAudio));
    lClock.Advance(Time::Seconds(0.9));
    EXPECT_FALSE(mPlayer.TrackHasPacket(kAudio));
    lClock.Advance(Time::Seconds(0.2));
    EXPECT_TRUE(mPlayer.TrackHasPacket(kAudio));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
    EXPECT_TRUE(mPlayer.HasTrackTimedOut(kVideo));
    EXPECT_EQ(Reception::End::kTimedOut, mPlayer.GetTrackReception(kVideo).mEnd);
}

TEST_F(RTSPPlayStateTest, FetchDeliversWhatIsQueuedAndReadsNothing) {
    Serve(StartDialogue());
    mHandler.Play(URL(), Time(0));
    mHandler.TakeCalls();
    Send(kVideo, 1, 0);
    EXPECT_FALSE(mHandler.Fetch(kVideo));
    Send(kVideo, 2, 4 * kTicks[kVideo]);
    EXPECT_TRUE(mHandler.Fill(kVideo));
    Send(kVideo, 3, 5 * kTicks[kVideo]);
    EXPECT_FALSE(mHandler.Fetch(kAudio));
    EXPECT_TRUE(mHandler.Fetch(kVideo));
    EXPECT_TRUE(mHandler.Fetch(kVideo));
    EXPECT_FALSE(mHandler.Fetch(kVideo));
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("video: State=Buffering", "audio: State=Buffering", "video: State=Playing",
                            "audio: State=Playing", "video: sample", "video: sample"));
}

TEST_F(RTSPPlayStateTest, FetchBeforeTheTracksAreBufferedDeliversNothing) {
    Start();
    Send(kVideo, 1, 0);
    EXPECT_FALSE(mPlayer.Fill(kVideo));
    EXPECT_FALSE(mPlayer.Fetch(kVideo));
}

TEST_F(RTSPPlayStateTest, NothingIsDeliveredWhilePaused) {
    Serve(StartDialogue() + "> PAUSE clip 5\n< 200 5");
    Play();
    Send(kVideo, 1, 0);
    Send(kVideo, 2, 4 * kTicks[kVideo]);
    EXPECT_TRUE(mPlayer.Fill(kVideo));
    mPlayer.Pause();
    Send(kVideo, 3, 5 * kTicks[kVideo]);
    EXPECT_FALSE(mPlayer.TrackHasPacket(kVideo));
    EXPECT_FALSE(mPlayer.Fetch(kVideo));
    EXPECT_EQ(2U, mPlayer.GetTrackReception(kVideo).mPacketsReceived) << "and nothing is read by asking for it";
    EXPECT_FALSE(mPlayer.Fill(kVideo));
    EXPECT_EQ(3U, mPlayer.GetTrackReception(kVideo).mPacketsReceived);
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing", "Paused"));
}

TEST_F(RTSPPlayStateTest, TracksThatAreNotThereHaveNothing) {
    Start("Quenra Strand");
    const auto lExpectNothing = [this] {
        EXPECT_FALSE(mPlayer.Produce(2));
        EXPECT_FALSE(mPlayer.Fill(2));
        EXPECT_FALSE(mPlayer.Fetch(2));
        EXPECT_EQ(0U, mPlayer.GetTrackReception(2).mPacketsReceived);
    };
    lExpectNothing();
    Send(kVideo, 1, 0);
    EXPECT_TRUE(TakesPacket(kVideo));
    lExpectNothing();
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering", "Playing"));
}

namespace {

bool IsReadable(SInt aDescriptor) {
    pollfd lPoll{aDescriptor, POLLIN, 0};
    return 1 == poll(&lPoll, 1, 0);
}

}  // namespace

TEST_F(RTSPPlayStateTest, SaysWhatAPacketCanBeAwaitedWith) {
    Serve(StartDialogue() + "> PAUSE clip 5\n< 200 5\n");
    EXPECT_EQ(-1, mPlayer.MediaDescriptor(kVideo)) << "nothing plays";
    Play();
    EXPECT_FALSE(mPlayer.MediaWaits()) << "what finds no room in the socket is lost";
    const SInt lVideo = mPlayer.MediaDescriptor(kVideo);
    ASSERT_NE(-1, lVideo);
    EXPECT_NE(lVideo, mPlayer.MediaDescriptor(kAudio)) << "each track has a socket of its own";
    EXPECT_EQ(-1, mPlayer.MediaDescriptor(2)) << "there is no such track";
    EXPECT_FALSE(IsReadable(lVideo));

    Send(kVideo, 1, 0);
    EXPECT_TRUE(IsReadable(lVideo));
    EXPECT_FALSE(TakesPacket(kVideo)) << "it is buffered";
    EXPECT_EQ(lVideo, mPlayer.MediaDescriptor(kVideo)) << "more is needed";
    EXPECT_FALSE(IsReadable(lVideo));

    Send(kVideo, 2, 4 * kTicks[kVideo]);
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_EQ(-1, mPlayer.MediaDescriptor(kVideo)) << "the second packet is here already";
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_EQ(lVideo, mPlayer.MediaDescriptor(kVideo));
    mPlayer.Pause();
    EXPECT_EQ(-1, mPlayer.MediaDescriptor(kVideo));
}

TEST_F(RTSPPlayStateTest, FiguresTellHowATrackIsReceived) {
    Start();
    const std::size_t lSize = 12 + 2;
    Send(kVideo, 1, 0);
    Send(kVideo, 3, 4 * kTicks[kVideo]);
    Send(kVideo, 2, 2 * kTicks[kVideo]);
    Send(kVideo, 2, 2 * kTicks[kVideo]);
    Send(kVideo, 6, 5 * kTicks[kVideo]);
    EXPECT_TRUE(TakesPacket(kVideo));
    EXPECT_TRUE(TakesPacket(kVideo));
    const Reception lFigures = mPlayer.GetTrackReception(kVideo);
    EXPECT_EQ(5U, lFigures.mPacketsReceived);
    EXPECT_EQ(1, lFigures.mPacketsLost) << "two are missing, one came twice";
    EXPECT_EQ(2U, lFigures.mPacketsReordered);
    EXPECT_EQ(1U, lFigures.mPacketsDuplicate);
    EXPECT_EQ(5 * lSize, lFigures.mBytes);
    EXPECT_GT(lFigures.mJitter, Time(0));
    EXPECT_EQ(Time(2, 1), lFigures.mCurrentTime);
    EXPECT_EQ(Time(1, 1), lFigures.mBufferedTime);
    EXPECT_EQ(Reception::End::kRunning, lFigures.mEnd);
}

TEST(RTSPPlayStateDeathTest, FetchingWithoutATransportIsAMistake) {
    const TestSupport::ReportCapture lReports;
    MediaPlayer lPlayer;
    EXPECT_THROW(lPlayer.Play("rtsp:///clip", Time(0)), NetworkErr);
    EXPECT_FALSE(lPlayer.Fill(0));
    EXPECT_FALSE(lPlayer.Produce(0));
    EXPECT_DEATH(lPlayer.Fetch(0), "0 != mSrc");
}

}  // namespace
}  // namespace Player::MediaSessions
