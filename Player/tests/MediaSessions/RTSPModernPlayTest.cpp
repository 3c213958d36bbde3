// The modern profile while media flows: signs of life, pauses, and bytes that belong to nothing.

#include <atomic>
#include <cstring>
#include <thread>

#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

std::string Packet(unsigned aSeq, unsigned aTimestamp, std::size_t aSize = 2) {
    return TestSupport::Hex(TestSupport::RtpPacket()
                                .Type(96)
                                .Seq(aSeq)
                                .Timestamp(aTimestamp)
                                .Marker()
                                .Payload(TestSupport::Bytes(aSize, 0x41))
                                .Build());
}

class RTSPModernPlayTest : public SessionTest {
protected:
    void SetUp() override {
        mPlayer.SetConfigParam("RTSP:Profile", "modern");
        mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    }

    void ServePackets(const std::string& aDialogue) {
        Serve(aDialogue);
        for (unsigned i = 1; i < 9; ++i) {
            mServer->Set("p" + std::to_string(i), Packet(i, i * 9000));
        }
        mServer->Set("large", Packet(2, 18000, 3000));
    }

    /// Produces until the server has come to that point.
    template <typename Call>
    void DoUntil(const char* aPoint, Call aCall) {
        std::atomic<bool> lReached{false};
        std::thread lWaiter([&] {
            EXPECT_TRUE(mServer->Await(aPoint));
            lReached = true;
        });
        while (!lReached) {
            aCall();
            std::this_thread::yield();
        }
        lWaiter.join();
    }
    UInt Received() const { return mPlayer.GetTrackReception(0).mPacketsReceived; }
};

std::string Start(const char* aTransport, const char* aSession = "5") {
    return "> DESCRIBE clip 1\n< 200 1 | SDP clip/ video\n> SETUP clip/video 2 | " + std::string(aTransport) +
           "\n< 200 2 | Session: " + std::string(aSession) + " | Public: OPTIONS, GET_PARAMETER | " + aTransport +
           "\n> PLAY clip/ 3\n< 200 3\n";
}

TEST_F(RTSPModernPlayTest, TheSessionIsKeptAliveOverUDPAndWhilePaused) {
    mPlayer.SetConfigParam("RTSP:Transports", "udp");
    ServePackets(Start("UDP 0", "5;timeout=1") + R"(
        > GET_PARAMETER clip/ 4 | Session: 5
        < 200 4
        > GET_PARAMETER clip/ 5 | Session: 5
        NOTIFY alive
        AWAIT pause
        < 200 5
        > PAUSE clip/ 6 | Session: 5
        < 200 6
        > GET_PARAMETER clip/ 7 | Session: 5
        < 454 7
        NOTIFY paused
        > PLAY clip/ 8 | Session: 5
        < 200 8
    )");
    Play();
    DoUntil("alive", [this] { mPlayer.Produce(0); });
    mServer->Notify("pause");
    mPlayer.Pause();
    DoUntil("paused", [this] { mPlayer.TakeIn(); });
    mPlayer.Resume();
    EXPECT_EQ("", mServer->Failure());
}

/// Servers that have sent everything say so when they are to pause, while the end still waits here.
TEST_F(RTSPModernPlayTest, AServerThatHasPlayedToItsEndCanBeSought) {
    mPlayer.SetConfigParam("RTSP:Transports", "udp");
    ServePackets(Start("UDP 0", "5") + R"(
        > PAUSE clip/ 4 | Session: 5
        < 455 4
        > PLAY clip/ 5 | Session: 5 | Range: npt=1.000000-
        < 200 5
        > PAUSE clip/ 6 | Session: 5
        < 455 6
        > PLAY clip/ 7 | Session: 5
        < 200 7
        > PAUSE clip/ 8 | Session: 5
        < 454 8
    )");
    Play();
    mPlayer.Seek(Time(1, 1));
    mPlayer.Pause();
    mPlayer.Resume();
    EXPECT_THROW(mPlayer.Pause(), RTSPErr) << "another refusal";
    EXPECT_EQ("", mServer->Failure());
}

TEST_F(RTSPModernPlayTest, TheSessionIsKeptAliveWithinItsConnection) {
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    ServePackets(Start("TCP 0", "5;timeout=1") + R"(
        > GET_PARAMETER clip/ 4 | Session: 5
        S$ 0 {p1}
        < 200 4
        S$ 0 {p2}
        NOTIFY sent
        > GET_PARAMETER clip/ 5 | Session: 5
        NOTIFY alive
    )");
    Play();
    DoUntil("alive", [this] { mPlayer.Produce(0); });
    EXPECT_EQ(2U, Received());
    EXPECT_EQ("", mServer->Failure());
}

TEST_F(RTSPModernPlayTest, ClassicSendsNoSignsOfLife) {
    mPlayer.SetConfigParam("RTSP:Profile", "classic");
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5;timeout=1 | UDP 0
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video
    )");
    Play();
    const auto lEnd = std::chrono::steady_clock::now() + std::chrono::milliseconds(700);
    while (std::chrono::steady_clock::now() < lEnd) {
        mPlayer.Produce(0);
    }
    EXPECT_EQ("", mServer->Failure());
}

TEST_F(RTSPModernPlayTest, AServerThatIsGoneEndsNothing) {
    mPlayer.SetConfigParam("RTSP:Transports", "udp");
    ServePackets(Start("UDP 0", "5;timeout=1") + "CLOSE\nRTP 0 {p1}\nNOTIFY sent\n");
    Play();
    DoUntil("sent", [] {});
    const auto lEnd = std::chrono::steady_clock::now() + std::chrono::milliseconds(700);
    while (std::chrono::steady_clock::now() < lEnd) {
        mPlayer.Produce(0);
    }
    EXPECT_EQ(1U, Received());
    EXPECT_EQ("", mServer->Failure());
}

/// Requests are numbered anew after a stop or a close: one may get the number of a sign of life that was never
/// answered.
class RTSPUnansweredTest : public RTSPModernPlayTest, public testing::WithParamInterface<bool> {};

TEST_P(RTSPUnansweredTest, TheNextAnswerWithThatNumberIsHeeded) {
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    ServePackets(Start("TCP 0", "5;timeout=1") + R"(
        > GET_PARAMETER clip/ 4 | Session: 5
        NOTIFY alive
        > TEARDOWN clip/ 5 | Session: 5
        < 200 5
        END
        ACCEPT
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2 | TCP 0
        < 200 2 | Session: 6 | TCP 0
        > SETUP clip/audio 3 | Session: 6 | TCP 1
        < 200 3 | Session: 6 | TCP 1
        > PLAY clip/ 4
        < 200 4
    )");
    Play();
    DoUntil("alive", [this] { mPlayer.Produce(0); });
    GetParam() ? mPlayer.Stop() : mPlayer.Close();
    Play();
    EXPECT_EQ(2U, mPlayer.GetTrackCount());
}

INSTANTIATE_TEST_SUITE_P(Stopped, RTSPUnansweredTest, testing::Bool());

TEST_F(RTSPModernPlayTest, AResponseWithoutANumberIsTaken) {
    for (const char* lNumber : {"", "S: CSeq:\n", "S: CSeq: none\n"}) {
        mPlayer.SetConfigParam("RTSP:Transports", "tcp");
        Serve("> DESCRIBE clip 1\nS: RTSP/1.0 404 Not Found\n" + std::string(lNumber) + "S:\n");
        MediaPlayer lPlayer;
        lPlayer.SetConfigParam("RTSP:Profile", "modern");
        try {
            lPlayer.Play(URL(), Time(0));
            ADD_FAILURE();
        } catch (const RTSPErr& lError) { EXPECT_EQ(0x404U, lError.Error()) << lError.Message(); }
        EXPECT_EQ("", mServer->Failure());
    }
    EXPECT_EQ(3U, mReports.Count(Severity::Warning, "RTSP::RecvResponse(): Response without a number"));
    Serve("> DESCRIBE clip 1\nS: RTSP/1.0 404 Not Found\nS: CSeq: 2\nS:\n");
    ExpectThrows<RTSPErr>(2, "RTSP::RecvResponse(): Invalid response: CSeq mismatch", [this] { Play(); });
}

TEST_F(RTSPModernPlayTest, GarbageBetweenFramesIsSteppedOver) {
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    ServePackets(Start("TCP 0") + R"(
        SPLIT
        S$ 0 {p1}
        NOTIFY first
        AWAIT more
        S# 00 01 24 63 00 01 ff
        S$ 0 {p2}
        NOTIFY second
        AWAIT more still
        S# 01 02
        NOTIFY third
        AWAIT stop
        > PAUSE clip/ 4
        S# 03 52 24 09
        < 200 4
    )");
    Play();
    DoUntil("first", [this] { mPlayer.Fill(0); });
    mServer->Notify("more");
    DoUntil("second", [this] { mPlayer.Fill(0); });
    // All of it may have come at once: what stands behind a frame that is no frame waits for the next look.
    mPlayer.Fill(0);
    mPlayer.Fill(0);
    EXPECT_EQ(2U, Received());
    EXPECT_EQ(1U, mReports.Count(Severity::Warning, "RTSP: skipped 7 bytes that are no message, 7 in all"));
    mServer->Notify("more still");
    DoUntil("third", [this] { mPlayer.Fill(0); });
    mServer->Notify("stop");
    mPlayer.Pause();
    EXPECT_EQ("", mServer->Failure());
}

TEST_F(RTSPModernPlayTest, ALongFrameIsTaken) {
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    ServePackets(Start("TCP 0") + "SPLIT\nS$ 0 {p1}\nS$ 0 {large}\nNOTIFY sent\n");
    Play();
    DoUntil("sent", [this] { mPlayer.Fill(0); });
    mPlayer.Fill(0);
    EXPECT_EQ(2U, Received());
}

/// VLC's first picture but two is shown before the first.
TEST_F(RTSPModernPlayTest, APictureThatIsShownBeforeTheFirstIsTaken) {
    const struct {
        const char* mInfo;
        UInt mReceived;
    } lCases[] = {{"seq=1;rtptime=180000", 3}, {"rtptime=180000", 2}, {"seq=2;rtptime=180000", 2}};
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    for (const auto& lCase : lCases) {
        std::string lStart = Start("TCP 0");
        lStart.insert(lStart.size() - 1, std::string(" | RTP-Info: url=video;") + lCase.mInfo);
        ServePackets(lStart + R"(
            SPLIT
            S$ 0 {p1}
            S$ 0 {p2}
            S$ 0 {p3}
            NOTIFY sent
        )");
        mServer->Set("p1", Packet(1, 180000));
        mServer->Set("p2", Packet(2, 190800));
        mServer->Set("p3", Packet(3, 176400));
        Play();
        DoUntil("sent", [this] { mPlayer.Fill(0); });
        mPlayer.Fill(0);
        EXPECT_EQ(lCase.mReceived, Received()) << lCase.mInfo;
        EXPECT_EQ("", mServer->Failure());
    }
}

/// All pictures around a pause come out, with what the server says about the resume.
class RTSPModernPauseTest : public RTSPModernPlayTest, public testing::WithParamInterface<const char*> {};

TEST_P(RTSPModernPauseTest, CostsNoPicture) {
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    ServePackets(Start("TCP 0") + R"(
        SPLIT
        S$ 0 {p1}
        S$ 0 {p2}
        NOTIFY sent
        > PAUSE clip/ 4
        < 200 4
        > PLAY clip/ 5
    )" + GetParam() +
                 R"(
        S$ 0 {a}
        S$ 0 {b}
        NOTIFY resumed
    )");
    const bool lGoesOn = nullptr == std::strstr(GetParam(), "60000") && nullptr == std::strstr(GetParam(), "seq=0");
    mServer->Set("a", Packet(lGoesOn ? 3 : 60000, lGoesOn ? 27000 : 4000000000U));
    mServer->Set("b", Packet(lGoesOn ? 4 : 60001, lGoesOn ? 36000 : 4000009000U));
    Play();
    DoUntil("sent", [this] { mPlayer.Fill(0); });
    mPlayer.Pause();
    mPlayer.Resume();
    DoUntil("resumed", [] {});
    unsigned lPictures = 0;
    while (mPlayer.GetTrackPacket(0) || mPlayer.GetTrackPacket(0)) {
        ++lPictures;
    }
    EXPECT_EQ(4U, lPictures);
    EXPECT_EQ(0U, mPlayer.GetTrackReception(0).mPacketsDuplicate);
}

/// live555 sends the first packet of a resume, with the number before that of "seq", ahead of its answer. Both are
/// later by the length of the pause on the server's clock, which takes no play time.
TEST_F(RTSPModernPlayTest, MediaMayOvertakeTheAnswerToAResume) {
    mPlayer.SetConfigParam("RTSP:Transports", "tcp");
    ServePackets(Start("TCP 0") + R"(
        SPLIT
        S$ 0 {p1}
        S$ 0 {p2}
        NOTIFY sent
        > PAUSE clip/ 4
        < 200 4
        > PLAY clip/ 5
        S$ 0 {a}
        < 200 5 | RTP-Info: url=video;seq=4;rtptime=900000
        S$ 0 {b}
        S$ 0 {c}
        NOTIFY resumed
    )");
    mServer->Set("a", Packet(3, 900000));
    mServer->Set("b", Packet(4, 903600));
    mServer->Set("c", Packet(5, 909000));
    Play();
    DoUntil("sent", [this] { mPlayer.Fill(0); });
    mPlayer.Pause();
    mPlayer.Resume();
    DoUntil("resumed", [] {});
    std::vector<long long> lMilliseconds;
    for (int lLook = 0; lLook < 8; ++lLook) {
        if (const Time lTime = TakeSample(0); Time(-1) != lTime) {
            lMilliseconds.push_back((lTime.NanoSeconds() + 500000) / 1000000);
        }
    }
    EXPECT_THAT(lMilliseconds, testing::ElementsAre(0, 100, 100, 140, 200));
    EXPECT_EQ(0, mPlayer.GetTrackReception(0).mPacketsLost);
}

INSTANTIATE_TEST_SUITE_P(Resumes, RTSPModernPauseTest,
                         testing::Values("< 200 5 | RTP-Info: url=video;seq=3;rtptime=27000\n",
                                         "< 200 5 | RTP-Info: url=video;seq=60000;rtptime=4000000000\n",
                                         "< 200 5 | RTP-Info: url=video;seq=0;rtptime=0\n", "< 200 5\n"));

}  // namespace
}  // namespace Player::MediaSessions
