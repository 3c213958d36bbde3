#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using TestSupport::Hex;
using TestSupport::RtpPacket;

class RTSPTrackSetUpTest : public SessionTest {
protected:
    /// Plays one or two interleaved tracks whose SETUP and PLAY responses have these header lines. Then comes
    /// what follows, if anything, and the server says "sent".
    void Start(const std::string& aSetup, const std::string& aPlay, const std::string& aThen = "") {
        Interleave();
        Serve(R"(
            > DESCRIBE clip 1
            < 200 1 | SDP clip/ video range=3-20
            > SETUP clip/video 2
            < 200 2 | Session: 5 | )" +
              aSetup + R"(
            > PLAY clip 3
            < 200 3 | )" +
              aPlay + (aThen.empty() ? "" : "\nSPLIT\n" + aThen + "\nNOTIFY sent"));
    }
    /// Sets {name} to a packet of the video track, a whole access unit.
    void SetPacket(const std::string& aName, unsigned aSeq, std::uint32_t aTimestamp, std::uint32_t aSSRC = 1) {
        const auto lPacket = RtpPacket().Seq(aSeq).Timestamp(aTimestamp).Ssrc(aSSRC).Marker().Payload({0x65, 1});
        mServer->Set(aName, Hex(lPacket.Build()));
    }
    UInt CountReceived() {
        EXPECT_TRUE(mServer->Await("sent"));
        mPlayer.Produce(0);
        return mPlayer.GetTrackReception(0).mPacketsReceived;
    }
};

TEST_F(RTSPTrackSetUpTest, TrackURLsAreBaseAndIdentifierAsTheyStand) {
    struct Case {
        const char* mHeaders;
        const char* mExpected;
    };
    for (const Case& lCase : {
             Case{"S: Content-Base: rtsp://h/base/", "rtsp://h/base/trackID=1"},
             Case{"S: content-base: rtsp://h/base", "rtsp://h/basetrackID=1"},
             Case{"S: Content-Location: rtsp://h/location", "rtsp://h/locationtrackID=1"},
             Case{"S: Content-Base: rtsp://h/b/\nS: Content-Location: rtsp://h/l/", "rtsp://h/b/trackID=1"},
             Case{"S: Content-Location: rtsp://h/l/\nS: Content-Base: rtsp://h/b/", "rtsp://h/b/trackID=1"},
             Case{"S: Server: any", nullptr},
         }) {
        Serve(std::string("> DESCRIBE clip 1\nS: RTSP/1.0 200 OK\nS: CSeq: 1\n") + lCase.mHeaders +
              "\nS: Content-Length: {length}\nS:\nS| v=0\nS| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 H264/90000\n"
              "S| a=control:trackID=1\n> SETUP x 2");
        mReports.Clear();
        MediaPlayer lPlayer;
        const std::string lExpected = nullptr == lCase.mExpected ? URL("cliptrackID=1") : lCase.mExpected;
        EXPECT_THROW(lPlayer.Play(URL(), Time(0)), Exception);
        EXPECT_EQ(1U, mReports.Count(Severity::Info, "Sending RTSP SETUP for URL: " + lExpected)) << lExpected;
        EXPECT_EQ(lExpected, lPlayer.GetTrackInfo(0)->Get("URL"));
        EXPECT_EQ(lExpected, lPlayer.GetCommonInfo()->Get("URL") + "trackID=1");
        mServer.reset();
    }
}

TEST_F(RTSPTrackSetUpTest, TheAvailableRangeIsTheFirstThatIsGiven) {
    struct Case {
        const char* mSession;
        std::vector<const char*> mTracks;
        const char* mExpected;
    };
    for (const Case& lCase : {
             Case{"0-20", {"3-4"}, "AvailableRange 0 20"},
             Case{"-", {"-", "0-7", "5-9"}, "AvailableRange 0 7"},
             Case{"-20", {"-8", "5-9"}, "AvailableRange 5 20"},
             Case{"2.5-", {"-", "-9.25"}, "AvailableRange 2.5 9.25"},
             Case{"-", {"-"}, "AvailableRange 0 0"},
             Case{"10-5", {}, "AvailableRange 10 5"},
             Case{"now-", {"3-4"}, "AvailableRange 0 4"},
         }) {
        std::string lScript = std::string(R"(
            > DESCRIBE clip 1
            S: RTSP/1.0 200 OK
            S: CSeq: 1
            S: Content-Length: {length}
            S:
            S| v=0
            S| a=range:npt=)") +
                              lCase.mSession;
        for (const char* lTrack : lCase.mTracks) {
            lScript += std::string("\nS| m=text 0 RTP/AVP 96\nS| a=range:npt=") + lTrack;
        }
        Serve(lScript + "\nS| m=text 0 RTP/AVP 96");
        RecordingHandler lHandler;
        lHandler.Play(URL(), Time(0));
        EXPECT_EQ(lCase.mExpected, lHandler.TakeCalls().at(1));
        EXPECT_EQ("", mServer->Failure());
    }
}

TEST_F(RTSPTrackSetUpTest, ADescriptionHasToHaveMedia) {
    struct Case {
        const char* mBody;
        unsigned mError;
        const char* mMessage;
    };
    const char* const kIncomplete = "RTSP::HandleSDP(): Invalid or incomplete SDP";
    for (const Case& lCase : {
             Case{"", 2, kIncomplete},
             Case{"v", 2, kIncomplete},
             Case{"v=", 2, kIncomplete},
             Case{"x=", 2, kIncomplete},
             Case{"v=0", 2, kIncomplete},
             Case{"v=0\r\na=range:npt=0-5\r\n", 2, kIncomplete},
             Case{"x=0", 1, "ParseSDP(): Bad SDP syntax"},
             Case{"v=1", 16, "ParseSDP(): Unsupported SDP version"},
             Case{"v=0\r\nm=video\r\n\r\nb:5", 1, "NextType(): Bad SDP syntax"},
             Case{"v=0\r\nm=video 0 RTP/AVP 96\r\nv=0\r\nm=", 0, ""},
         }) {
        SCOPED_TRACE(lCase.mBody);
        const std::string lSpelled = TestSupport::Quoted(lCase.mBody);
        Serve("> DESCRIBE clip 1\nS: RTSP/1.0 200 OK\nS: CSeq: 1\nS: Content-Length: " +
              std::to_string(std::string(lCase.mBody).size()) + "\nS:\nS~ " + lSpelled.substr(1, lSpelled.size() - 2) +
              "\n> DESCRIBE clip 2\n< 200 2 | SDP clip/ text");
        MediaPlayer lPlayer;
        const auto lPlay = [&] { lPlayer.Play(URL(), Time(0)); };
        if (0 != lCase.mError) { ExpectThrows<SDPErr>(lCase.mError, lCase.mMessage, lPlay); }
        if (0 == lCase.mError) { lPlay(); }
        lPlay();
        EXPECT_EQ("", mServer->Failure());
    }
}

TEST_F(RTSPTrackSetUpTest, HalfADescriptionIsNotSetUp) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2
        < 404 2
        > DESCRIBE other 3
        S: RTSP/1.0 200 OK
        S: CSeq: 3
        S: Content-Length: {length}
        S:
        S| v=0
        S| m=video 0 RTP/AVP 96
        S| m=audio 0 RTP/AVP 96
        S| nonsense
        > DESCRIBE other 4
        < 200 4 | SDP other/ text
    )");
    EXPECT_THROW(Play(), RTSPErr);
    EXPECT_THROW(Play("other"), SDPErr);
    Play("other");
    EXPECT_EQ(0U, mPlayer.GetTrackCount());
}

TEST_F(RTSPTrackSetUpTest, ManyMediaAreReadAndTheirTracksStayDense) {
    // The description is with the client's system before the client begins to read it.
    class Waiting : public TestSupport::ReportCapture {
    public:
        void Report(const char* aFile, UInt aLine, Severity aSeverity, const char* aMessage) override {
            ReportCapture::Report(aFile, aLine, aSeverity, aMessage);
            if (nullptr != mServer && 0 == std::string(aMessage).find("Sending RTSP DESCRIBE")) {
                EXPECT_TRUE(mServer->Await("sent"));
            }
        }
        TestSupport::ScriptedServer* mServer = nullptr;
    };
    Waiting lReports;
    std::string lMedia;
    for (unsigned i = 0; i < 10000; ++i) {
        lMedia += "m=v\\n";
    }
    for (const char* lId : {"a", "b"}) {
        lMedia += std::string("m=video 0 RTP/AVP 96\\na=rtpmap:96 H264/90000\\na=control:") + lId + "\\n";
    }
    Interleave();
    Serve(R"(
        S: RTSP/1.0 200 OK
        S: CSeq: 1
        S: Content-Length: )" +
          std::to_string(4 + lMedia.size() - 10006) + R"(
        S:
        S~ v=0\n)" +
          lMedia + R"(
        NOTIFY sent
        > DESCRIBE clip 1
        > SETUP clipa 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clipb 3 | Session: 5 | TCP 1
        < 200 3
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/b
    )");
    lReports.mServer = mServer.get();
    Play();
    EXPECT_EQ(2U, mPlayer.GetTrackCount());
    EXPECT_EQ(1U, lReports.Count(Severity::Debug, "Track 10001:"));
}

TEST_F(RTSPTrackSetUpTest, TheSequenceBaseIsItsLow16Bits) {
    Start("TCP 0", "RTP-Info: url=r/video;seq=70000;rtptime=1", R"(
        S$ 0 {early}
        S$ 0 {first}
    )");
    SetPacket("early", 4463, 1);
    SetPacket("first", 4464, 1);
    Play();
    EXPECT_EQ(1U, CountReceived());
}

TEST_F(RTSPTrackSetUpTest, TheSSRCIsHexadecimal) {
    Start("Transport: RTP/AVP/TCP; ssrc = 1A2B3C4D ;interleaved=0-1", "RTP-Info: url=r/video", R"(
        S$ 0 {other}
        S$ 0 {right}
    )");
    SetPacket("other", 1, 1, 0x1A2B3C4E);
    SetPacket("right", 2, 1, 0x1A2B3C4D);
    Play();
    EXPECT_EQ(1U, CountReceived());
}

TEST_F(RTSPTrackSetUpTest, TheChannelsAreTheServersChoice) {
    Start("Transport: RTP/AVP/TCP;interleaved=4-5;Interleaved=6-7", "RTP-Info: url=r/video", R"(
        S$ 0 {packet}
        S$ 6 {packet}
        S$ 4 {packet}
    )");
    SetPacket("packet", 1, 1);
    Play();
    EXPECT_EQ(1U, CountReceived());
}

TEST_F(RTSPTrackSetUpTest, TimesCountFromRTPInfoAndRange) {
    mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    Start("TCP 0", "RTP-Info: url=r/video;seq=10;rtptime=90000 | Range: npt=12.5-", R"(
        S$ 0 {first}
        S$ 0 {second}
    )");
    SetPacket("first", 10, 90000 + 45000);
    SetPacket("second", 11, 90000 + 90000);
    Play();
    ASSERT_TRUE(mServer->Await("sent"));
    EXPECT_EQ(Time(13, 1), TakeSample(0));
    EXPECT_EQ(Time(27, 2), TakeSample(0));
    Time lBegin;
    Time lEnd;
    mPlayer.GetPlayingRange(lBegin, lEnd);
    EXPECT_EQ(Time(25, 2), lBegin);
    EXPECT_EQ(Time(20, 1), lEnd) << "an open range goes to the end of the description's";
}

TEST_F(RTSPTrackSetUpTest, ARangeIsThatOfEveryTrack) {
    mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0");
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Server: Quenra Strand | SDP clip/ text video audio
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5
        > SETUP clip/audio 3 | Session: 5 | UDP 1
        < 200 3
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video;rtptime=90000,url=r/audio;rtptime=8000 | Range: npt=12.5-14
    )");
    Play();
    for (const TrackIdx lTrack : {0U, 1U}) {
        const std::uint32_t lSecond = 0 == lTrack ? 90000 : 8000;
        const auto lPacket = [&](unsigned aSeq) {
            return RtpPacket()
                .Type(96 + lTrack)
                .Seq(aSeq)
                .Timestamp((aSeq + 1) * lSecond)
                .Marker()
                .Payload({0x44, 0x44, 1, 2, 3, 4, 5})
                .Build();
        };
        mServer->Media(lTrack).SendRtp(lPacket(1));
        EXPECT_EQ(Time(27, 2), TakeSample(lTrack));
        EXPECT_EQ(nullptr, mPlayer.GetTrackPacket(lTrack).Ptr());
        EXPECT_FALSE(mPlayer.IsTrackEnded(lTrack)) << "half a second is missing";
        mServer->Media(lTrack).SendRtp(lPacket(2));
        EXPECT_EQ(Time(29, 2), TakeSample(lTrack));
        EXPECT_EQ(nullptr, mPlayer.GetTrackPacket(lTrack).Ptr());
        EXPECT_TRUE(mPlayer.IsTrackEnded(lTrack));
    }
}

TEST_F(RTSPTrackSetUpTest, RangesInEveryForm) {
    struct Case {
        const char* mRange;
        const char* mExpected;
    };
    for (const Case& lCase : {
             Case{"Range: npt=5-6", "PlayingRange 5 6"},
             Case{"Range:  time=x; npt = 5.5 - 6.25 ;clock=7", "PlayingRange 5.5 6.25"},
             Case{"Range: npt=5-", "PlayingRange 5 20"},
             Case{"Range: npt=5", "PlayingRange 5 20"},
             Case{"Range: npt=-6", "PlayingRange 3 6"},
             Case{"Range: npt=-", "PlayingRange 3 20"},
             Case{"Range: npt=", "PlayingRange 3 20"},
             Case{"Range: npt", "PlayingRange 3 20"},
             Case{"Range: npt=now-", "PlayingRange 0 20"},
             Case{"Range: npt=5-6-7", "PlayingRange 5 6"},
             Case{"Range: clock=19961108T142300Z-", "PlayingRange 0 0"},
             Case{"Range: NPT=5-6", "PlayingRange 0 0"},
             Case{"Range:", "PlayingRange 0 0"},
             Case{"X-Range: npt=5-6", "PlayingRange 0 0"},
         }) {
        Start("TCP 0", std::string("RTP-Info: url=r/video | ") + lCase.mRange);
        RecordingHandler lHandler;
        lHandler.SetConfigParam("RTSP:UseInterleavedRTP", "1");
        lHandler.Play(URL(), Time(0));
        const auto lCalls = lHandler.TakeCalls();
        ASSERT_EQ(6U, lCalls.size());
        EXPECT_EQ(lCase.mExpected, lCalls[4]) << lCase.mRange;
        EXPECT_EQ("", mServer->Failure());
    }
}

TEST_F(RTSPTrackSetUpTest, SourceAndPortsTellWhereTheMediaComesFrom) {
    struct Case {
        const char* mTransport;
        std::vector<std::string> mPunched;
    };
    for (const Case& lCase : {
             Case{"Transport: RTP/AVP;source=127.0.0.2;server_port=7000-7001", {"127.0.0.2:7000", "127.0.0.2:7001"}},
             Case{"Transport: RTP/AVP;server_port=7000-7001-7002", {"127.0.0.1:7000", "127.0.0.1:7001"}},
             Case{"Transport: RTP/AVP;server_port=7000-7001-", {"127.0.0.1:7000", "127.0.0.1:7001"}},
             Case{"Transport: RTP/AVP;server_port=7000", {"127.0.0.1:7000"}},
             Case{"Transport: RTP/AVP;server_port=7000-", {"127.0.0.1:7000"}},
             Case{"Transport: RTP/AVP;server_port=", {}},
             Case{"Transport: RTP/AVP;source=;server_port=7000-7001", {}},
             Case{"Transport: RTP/AVP;Server_Port=7000-7001", {}},
         }) {
        Serve(std::string(R"(
            > DESCRIBE clip 1
            < 200 1 | SDP clip/ video
            > SETUP clip/video 2
            < 200 2 | Session: 5 | )") +
              lCase.mTransport + R"(
            > PLAY clip 3
            < 200 3 | RTP-Info: url=r/video
        )");
        MediaPlayer lPlayer;
        mReports.Clear();
        lPlayer.Play(URL(), Time(0));
        std::vector<std::string> lPunched = Reported("Punching a hole to IP: ");
        for (auto& lEntry : lPunched) {
            lEntry.replace(lEntry.find(", Port: "), 8, ":");
        }
        EXPECT_EQ(lCase.mPunched, lPunched) << lCase.mTransport;
        EXPECT_EQ("", mServer->Failure());
    }
}

/// Plays tracks "a" and "b" of the type video and "c" of the type audio and tells which of them an RTP-Info
/// header sets: those whose sequence base became 100.
class RTSPInfoTest : public RTSPTrackSetUpTest {
protected:
    std::string Tracks(const std::string& aInfo) {
        Serve(R"(
            > DESCRIBE clip 1
            < 200 1 | SDP clip/ video@a video@b audio@c
            > SETUP clip/a 2 | UDP 0
            < 200 2 | Session: 5
            > SETUP clip/b 3 | Session: 5 | UDP 1
            < 200 3
            > SETUP clip/c 4 | Session: 5 | UDP 2
            < 200 4
            > PLAY clip 5
            < 200 5 | RTP-Info: )" +
              aInfo);
        MediaPlayer lPlayer;
        lPlayer.Play(URL(), Time(0));
        std::string lSet;
        for (TrackIdx lIdx = 0; lIdx < 3; ++lIdx) {
            auto& lSender = mServer->Media(0);
            lSender.SetClientPort(
                static_cast<unsigned>(std::stoul(mServer->Get("client_port" + std::to_string(lIdx)))));
            lSender.SendRtp(RtpPacket().Type(2 == lIdx ? 97 : 96).Seq(99).Payload({1}).Build());
            lPlayer.Fill(lIdx);
            if (0 == lPlayer.GetTrackReception(lIdx).mPacketsReceived) { lSet += "abc"[lIdx]; }
        }
        EXPECT_EQ("", mServer->Failure());
        return lSet;
    }
};

TEST_F(RTSPInfoTest, EntriesNameTracksByTheFirstOfTheirType) {
    struct Case {
        const char* mInfo;
        const char* mSet;
    };
    for (const Case& lCase : {
             Case{"url=rtsp://h/clip/c;seq=100", "c"},
             Case{"url=rtsp://h/clip/a;seq=100", "ab"},
             Case{"url=rtsp://h/clip/b;seq=100", ""},
             Case{"url=rtsp://h/clip/c;seq=100,url=rtsp://h/clip/a;seq=100", "abc"},
             Case{"url=rtsp://h/clip/c;seq=100,url=rtsp://h/clip/a;seq=1", "c"},
             Case{"  url = /c ;seq = 100 , url=/a\t;seq=100  ,", "abc"},
             Case{"url=c;seq=100", ""},
             Case{"url=x/c;seq=100,url=a;seq=100", "c"},
             Case{"seq=100;url=h/c", ""},
             Case{"url=h/c/;seq=100", ""},
             Case{"url=h/C;seq=100", ""},
             Case{"/c;seq=100", "c"},
             Case{"url=h/c?x=1;seq=100", ""},
             Case{"url=h/c;Seq=100", ""},
             Case{"url=h/c;seq=5;seq=100", "c"},
             Case{"url=h/c;seq=65636", "c"},
             Case{";,;;,=,/,;/c;seq=100", ""},
             Case{"url=h/c", ""},
         }) {
        EXPECT_EQ(lCase.mSet, Tracks(lCase.mInfo)) << lCase.mInfo;
    }
}

TEST_F(RTSPTrackSetUpTest, HostileValuesDoNoHarm) {
    const std::string lLong(3000, '9');
    for (const std::string& lTransport :
         {std::string(""), std::string(";;;==;"), "ssrc=" + lLong + ";seq=-1;rtptime=" + lLong,
          "interleaved=" + lLong + "-" + lLong, std::string("interleaved=-1--2"), std::string("interleaved="),
          std::string("source=;server_port=1-2"), std::string("source=127.0.0.1;server_port=99999-" + lLong),
          std::string("source=127.0.0.1;server_port=--------"), std::string("source=127.0.0.1;server_port=-1--1"),
          std::string("source=256.1.1.1;server_port=5-6"), std::string("source=%s%n;server_port=%s-%n")}) {
        for (const bool lIsInterleaved : {false, true}) {
            Serve(R"(
                > DESCRIBE clip 1
                < 200 1 | SDP clip/ video
                > SETUP clip/video 2
                < 200 2 | Session: %s%n | Transport: )" +
                  lTransport + R"(
                > PLAY clip 3
                < 200 3 | RTP-Info: url=r/video;)" +
                  lTransport + " | Range: npt=" + lLong + "-" + lLong + "." + lLong + R"(
                > PAUSE clip 4
                < 200 4
                > PLAY clip 5
                < 200 5 | RTP-Info: url=r/video,,,/;, | Range: npt=---;=;npt=-1-
                > TEARDOWN clip 6
                < 200 6
            )");
            MediaPlayer lPlayer;
            lPlayer.SetConfigParam("RTSP:UseInterleavedRTP", lIsInterleaved ? "1" : "0");
            lPlayer.Play(URL(), Time(0));
            EXPECT_FALSE(lPlayer.TrackHasPacket(0));
            lPlayer.Seek(Time(-1));
            EXPECT_FALSE(lPlayer.TrackHasPacket(0));
            lPlayer.Close();
            EXPECT_EQ("", mServer->Failure()) << lTransport;
        }
    }
}

}  // namespace
}  // namespace Player::MediaSessions
