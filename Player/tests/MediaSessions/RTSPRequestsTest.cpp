// Every request, word for word.
#include "MediaSessions/RTSP/CommaLocale.hpp"
#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/RTSPRequestsFixture.hpp"
#include "support/ClockUnderTest.hpp"
#include "support/Packets.hpp"
#include "support/Throws.hpp"

namespace Player {
namespace {

using TestSupport::ScriptedServer;
using TestSupport::Thrown;

// ---------------------------------------------------------------------------- every request

TEST_F(RTSPRequestsTest, AWholeSessionOverUDP) {
    ScriptedServer lServer(Described(kVideo) + R"(
        C: SETUP rtsp://127.0.0.1:{port}/clip/track1 RTSP/1.0
        C: CSeq: 2
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Transport: RTP/AVP;unicast;client_port={client_port0}-{client_port0+1}
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 2
        S: Session: 12345;timeout=60
        S: Transport: RTP/AVP;unicast;client_port={client_port0}-{client_port0+1};server_port={server_port0}
        S:
        C: PLAY rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 3
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C: Range: npt=0.000000-
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 3
        S: RTP-Info: url=rtsp://127.0.0.1/clip/track1;seq=1;rtptime=0
        S:
        C: PAUSE rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 4
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 4
        S:
        // Going on says nothing about where.
        C: PLAY rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 5
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 5
        S: RTP-Info: url=rtsp://127.0.0.1/clip/track1;seq=1;rtptime=0
        S:
        // Seeking while playing.
        C: PAUSE rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 6
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 6
        S:
        C: PLAY rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 7
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C: Range: npt=12.500000-
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 7
        S: RTP-Info: url=rtsp://127.0.0.1/clip/track1;seq=1;rtptime=0
        S:
        C: TEARDOWN rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 8
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 8
        S:
        END
    )");
    mPlayer.Play(lServer.URL(), Time(0));
    // The way for media is opened from the client's ports to the server that was connected to.
    EXPECT_EQ(TestSupport::Bytes(8), lServer.Media(0).ReceiveRtp());
    EXPECT_EQ(TestSupport::Bytes(8), lServer.Media(0).ReceiveRtcp());
    mPlayer.Pause();
    mPlayer.Resume();
    mPlayer.Seek(Time(25, 2));
    mPlayer.Close();
    EXPECT_EQ("", lServer.Failure());

    const std::string lURL = lServer.URL();
    for (const std::string& lReport :
         {"Sending RTSP DESCRIBE for URL: " + lURL, "Sending RTSP SETUP for URL: " + lURL + "/track1",
          // The blank ends this one only.
          "Sending RTSP TEARDOWN for URL: " + lURL + " "}) {
        EXPECT_EQ(1U, mReports.Count(Severity::Info, lReport)) << lReport;
    }
    EXPECT_EQ(3U, mReports.Count(Severity::Info, "Sending RTSP PLAY for URL: " + lURL));
    EXPECT_EQ(2U, mReports.Count(Severity::Info, "Sending RTSP PAUSE for URL: " + lURL));
}

TEST_F(RTSPRequestsTest, EveryRequestEndsWithTheSharedHeaders) {
    const std::string lShared = "C: X-Network-Type: wifi\nC: Referrer: there\nC: X-WAP-Profile: \"wap\"\nC:\n";
    const std::string lAgent = "C: User-Agent: Name/1.2 (Build/Unknown; Platform/Linux; Device/TV; )\n";
    const auto lRequest = [&](const char* aMethod, const char* aCSeq, const std::string& aLines) {
        return std::string("C: ") + aMethod + " RTSP/1.0\nC: CSeq: " + aCSeq + "\n" + lAgent + aLines + lShared +
               OkTo(aCSeq);
    };
    const std::string lSession = "C: Session: 12345\n";
    ScriptedServer lServer(lRequest("DESCRIBE rtsp://127.0.0.1:{port}/clip", "1",
                                    "C: Supported: 3gpp-pipelined, 3gpp-switch-req-sdp\nC: Accept: application/sdp\n") +
                           Description(kVideo) +
                           lRequest("SETUP rtsp://127.0.0.1:{port}/clip/track1", "2",
                                    "C: Transport: RTP/AVP/TCP;unicast;interleaved=0-1\n") +
                           "S: Session: 12345\nS:\n" +
                           lRequest("PLAY rtsp://127.0.0.1:{port}/clip", "3", lSession + "C: Range: npt=0.000000-\n") +
                           kPlayed + lRequest("PAUSE rtsp://127.0.0.1:{port}/clip", "4", lSession) + "S:\n" +
                           lRequest("PLAY rtsp://127.0.0.1:{port}/clip", "5", lSession) + kPlayed +
                           lRequest("PAUSE rtsp://127.0.0.1:{port}/clip", "6", lSession) + "S:\n" +
                           lRequest("PLAY rtsp://127.0.0.1:{port}/clip", "7", lSession + "C: Range: npt=1.000000-\n") +
                           kPlayed + lRequest("TEARDOWN rtsp://127.0.0.1:{port}/clip", "8", lSession) + "S:\nEND\n");
    mPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
    mPlayer.SetConfigParam("RTSP:UseUserAgentNameStr", "Name");
    mPlayer.SetConfigParam("RTSP:UseUserAgentVersionStr", "1.2");
    mPlayer.SetConfigParam("RTSP:UseDeviceStr", "TV");
    mPlayer.SetConfigParam("RTSP:SendWAPProfile", "\"wap\"");
    mPlayer.SetConfigParam("RTSP:SendReferrer", "there");
    mPlayer.SetConfigParam("RTSP:SendNetworkType", "wifi");
    // Credentials are for a proxy, and there is none.
    mPlayer.SetConfigParam("RTSP:SendProxyAuth", "Basic abc");
    mPlayer.Play(lServer.URL(), Time(0));
    mPlayer.Pause();
    mPlayer.Resume();
    mPlayer.Seek(Time(1, 1));
    mPlayer.Close();
    EXPECT_EQ("", lServer.Failure());
}

// Connects to the proxy, asks for the server; only DESCRIBE shows the credentials.
TEST_F(RTSPRequestsTest, AProxyGetsItsCredentialsWithDescribe) {
    const std::string lAgent = kAgent;
    ScriptedServer lServer(
        "C: DESCRIBE rtsp://server.invalid:99/clip RTSP/1.0\nC: CSeq: 1\n" + lAgent +
        "C: Supported: 3gpp-pipelined, 3gpp-switch-req-sdp\nC: Accept: application/sdp\n"
        "C: Proxy-Authorization: Basic abc\nC: X-Network-Type: wifi\nC:\n" +
        OkTo("1") + "S: Content-Base: rtsp://server.invalid:99/clip/\nS: Content-Length: {length}\nS:\nS| v=0\n" +
        kVideo + "C: SETUP rtsp://server.invalid:99/clip/track1 RTSP/1.0\nC: CSeq: 2\n" + lAgent +
        "C: Transport: RTP/AVP/TCP;unicast;interleaved=0-1\nC: X-Network-Type: wifi\nC:\n" + OkTo("2") +
        "S: Session: 12345\nS:\n"
        "C: PLAY rtsp://server.invalid:99/clip RTSP/1.0\nC: CSeq: 3\n" +
        lAgent + "C: Session: 12345\nC: Range: npt=0.000000-\nC: X-Network-Type: wifi\nC:\n" + OkTo("3") + kPlayed +
        // Opened anew, it is the proxy's connection again.
        "SPLIT\nCLOSE\nNOTIFY closed\nACCEPT\n"
        "C: TEARDOWN rtsp://server.invalid:99/clip RTSP/1.0\nC: CSeq: 4\n" +
        lAgent + "C: Session: 12345\nC: X-Network-Type: wifi\nC:\n" + OkTo("4") + "S:\nEND\n");
    const std::string lProxy = "127.0.0.1:" + std::to_string(lServer.Port());
    mPlayer.SetConfigParam("RTSP:UseProxy", lProxy);
    mPlayer.SetConfigParam("RTSP:SendProxyAuth", "Basic abc");
    mPlayer.SetConfigParam("RTSP:SendNetworkType", "wifi");
    mPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
    mPlayer.Play("rtsp://server.invalid:99/clip", Time(0));
    EXPECT_TRUE(lServer.Await("closed"));
    mPlayer.Close();
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(2U, mReports.Count(Severity::Info, "Connecting to RTSP server: server.invalid:99, Via proxy: " + lProxy));
}

TEST_F(RTSPRequestsTest, AProxyWithoutCredentialsGetsNone) {
    ScriptedServer lServer("C: DESCRIBE rtsp://server.invalid/clip RTSP/1.0\nC: CSeq: 1\n" + std::string(kAgent) +
                           "C: Supported: 3gpp-pipelined, 3gpp-switch-req-sdp\nC: Accept: application/sdp\nC:\n"
                           "S: RTSP/1.0 404 Not Found\nS: CSeq: 1\nS:\n");
    mPlayer.SetConfigParam("RTSP:UseProxy", "127.0.0.1:" + std::to_string(lServer.Port()));
    EXPECT_EQ("17/1028 RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found",
              Thrown([&] { mPlayer.Play("rtsp://server.invalid/clip", Time(0)); }));
    EXPECT_EQ("", lServer.Failure());
}

TEST_F(RTSPRequestsTest, PlayBeginsWhereItIsTold) {
    struct Case {
        Time mFrom;
        const char* mRange;
    };
    for (const Case& lCase : {Case{Time(0), "npt=0.000000-"}, Case{Time(25, 2), "npt=12.500000-"},
                              Case{Time(7200, 1), "npt=7200.000000-"}, Case{Time(1, 3), "npt=0.333333-"}}) {
        ScriptedServer lServer(kToTheRange);
        mPlayer.Play(lServer.URL(), lCase.mFrom);
        mPlayer.Close();
        EXPECT_EQ("", lServer.Failure());
        EXPECT_EQ(lCase.mRange, lServer.Get("range"));
    }
}

TEST_F(RTSPRequestsTest, NoLocaleGetsIntoARequest) {
    ScriptedServer lServer(kToTheRange);
    {
        const Testing::CommaLocale lLocale;
        mPlayer.Play(lServer.URL(), Time(14401, 2));
        mPlayer.Close();
    }
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ("npt=7200.500000-", lServer.Get("range"));
}

TEST_F(RTSPRequestsTest, InterleavedTracksHaveTwoChannelsEach) {
    ScriptedServer lServer(Described(std::string(kVideo) + kAudio) + R"(
        C: SETUP rtsp://127.0.0.1:{port}/clip/track1 RTSP/1.0
        C: CSeq: 2
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 2
        S: Session: 12345
        S:
        C: SETUP rtsp://127.0.0.1:{port}/clip/track2 RTSP/1.0
        C: CSeq: 3
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C: Transport: RTP/AVP/TCP;unicast;interleaved=2-3
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 3
        // The first identifier is the session's.
        S: Session: other
        S:
        C: PLAY rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 4
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C: Range: npt=0.000000-
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 4
        S: RTP-Info: url=rtsp://127.0.0.1/clip/track1;seq=1;rtptime=0
        S:
        C: TEARDOWN rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 5
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 5
        S:
        END
    )");
    mPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "2");
    mPlayer.Play(lServer.URL(), Time(0));
    EXPECT_EQ(2U, mPlayer.GetTrackCount());
    mPlayer.Close();
    EXPECT_EQ("", lServer.Failure());
}

TEST_F(RTSPRequestsTest, PortsLieInTheConfiguredRange) {
    ScriptedServer lServer(Described(kVideo) + "C: SETUP {*}\nC: CSeq: 2\n" + kAgent +
                           "C: Transport: RTP/AVP;unicast;client_port={port0}-{port0+1}\nC:\n"
                           "S: RTSP/1.0 500 Enough\nS: CSeq: 2\nS:\n");
    mPlayer.SetConfigParam("RTSP:UseUDPPortsFrom", "30001");
    mPlayer.SetConfigParam("RTSP:UseUDPPortsTo", "30999");
    EXPECT_EQ("17/1280 RTSP::DoPlay(): SETUP failed: 500 Enough",
              Thrown([&] { mPlayer.Play(lServer.URL(), Time(0)); }));
    EXPECT_EQ("", lServer.Failure());
    const unsigned long lPort = std::stoul(lServer.Get("port0"));
    EXPECT_EQ(0U, lPort % 2);
    EXPECT_LE(30000U, lPort);
    EXPECT_GT(31000U, lPort);
}

// All go out before the first answer is awaited, and none but the TEARDOWN knows the session.
TEST_F(RTSPRequestsTest, PipelinedRequestsBearOneNumber) {
    ScriptedServer lServer(Described(std::string(kVideo) + kAudio, "S: Supported: 3gpp-pipelined\n") + R"(
        C: SETUP rtsp://127.0.0.1:{port}/clip/track1 RTSP/1.0
        C: CSeq: 2
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Pipelined-Requests: 00000001
        C: Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        C:
        C: SETUP rtsp://127.0.0.1:{port}/clip/track2 RTSP/1.0
        C: CSeq: 3
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Require: 3gpp-pipelined
        C: Pipelined-Requests: 00000001
        C: Transport: RTP/AVP/TCP;unicast;interleaved=2-3
        C:
        C: PLAY rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 4
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Require: 3gpp-pipelined
        C: Pipelined-Requests: 00000001
        C: Range: npt=3.000000-
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 2
        S: Session: 12345
        S:
        S: RTSP/1.0 200 OK
        S: CSeq: 3
        S: Session: 12345
        S:
        S: RTSP/1.0 200 OK
        S: CSeq: 4
        S: RTP-Info: url=rtsp://127.0.0.1/clip/track1;seq=1;rtptime=0
        S:
        C: PAUSE rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 5
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 5
        S:
        C: PLAY rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 6
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C: Range: npt=12.500000-
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 6
        S: RTP-Info: url=rtsp://127.0.0.1/clip/track1;seq=1;rtptime=0
        S:
        // The same server again, which can't switch: set up anew, with the next number.
        C: TEARDOWN rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 7
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 7
        S:
    )" + Describe("8", "other") +
                           "C:\n" + OkTo("8") + Description(kVideo) + R"(
        C: SETUP rtsp://127.0.0.1:{port}/clip/track1 RTSP/1.0
        C: CSeq: 9
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Pipelined-Requests: 00000002
        C: Transport: RTP/AVP/TCP;unicast;interleaved=0-1
        C:
        C: PLAY rtsp://127.0.0.1:{port}/other RTSP/1.0
        C: CSeq: 10
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Require: 3gpp-pipelined
        C: Pipelined-Requests: 00000002
        C: Range: npt=0.000000-
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 9
        S: Session: 678
        S:
        S: RTSP/1.0 200 OK
        S: CSeq: 10
        S: RTP-Info: url=rtsp://127.0.0.1/clip/track1;seq=1;rtptime=0
        S:
        C: TEARDOWN rtsp://127.0.0.1:{port}/other RTSP/1.0
        C: CSeq: 11
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 678
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 11
        S:
        END
    )");
    mPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
    mPlayer.Play(lServer.URL(), Time(3, 1));
    mPlayer.Seek(Time(25, 2));
    mPlayer.Play(lServer.URL("other"), Time(0));
    mPlayer.Close();
    EXPECT_EQ("", lServer.Failure());
}

TEST_F(RTSPRequestsTest, ASwitchingPlayAsksForTheDescription) {
    for (const char* lSupported : {"3gpp-switch-req-sdp", "3gpp-pipelined, 3gpp-switch-req-sdp"}) {
        const bool lPipelined = std::string(lSupported) != "3gpp-switch-req-sdp";
        ScriptedServer lServer(Described(kVideo, std::string("S: Supported: ") + lSupported + "\n") +
                               "C: SETUP {*}\nC...\n" + (lPipelined ? "C: PLAY {*}\nC...\n" : "") + OkTo("2") +
                               "S: Session: 12345\nS:\n" + (lPipelined ? "" : "C: PLAY {*}\nC...\n") + OkTo("3") +
                               kPlayed + R"(
            C: PLAY rtsp://127.0.0.1:{port}/other RTSP/1.0
            C: CSeq: 4
            C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
            C: Session: 12345
            C: Require: 3gpp-switch-req-sdp
            C: SDP-Requested: 1
            C: Range: npt=1.500000-
            C:
            S: RTSP/1.0 200 OK
            S: CSeq: 4
            S: RTP-Info: url=rtsp://127.0.0.1/other/track1;seq=1;rtptime=0
        )" + Description(kVideo) +
                               "C: TEARDOWN {*}/other RTSP/1.0\nC: CSeq: 5\nC...\n" + OkTo("5") + "S:\nEND\n");
        mPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
        mPlayer.Play(lServer.URL(), Time(0));
        mPlayer.Play(lServer.URL("other"), Time(3, 2));
        mPlayer.Close();
        EXPECT_EQ("", lServer.Failure()) << lSupported;
    }
}

// A setting that is taken back returns to its default with the next request.
TEST_F(RTSPRequestsTest, SettingsAreReadAnewWhenTheyChange) {
    ScriptedServer lServer(Described(kVideo) + "C: SETUP {*}\nC...\n" + OkTo("2") + "S: Session: 12345\nS:\n" +
                           "C: PLAY {*}\nC...\n" + OkTo("3") + kPlayed + R"(
        C: PAUSE rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 4
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/TV; )
        C: Session: 12345
        C: Referrer: there
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 4
        S:
        C: TEARDOWN rtsp://127.0.0.1:{port}/clip RTSP/1.0
        C: CSeq: 5
        C: User-Agent: QuenraPlayer/x.x (Build/Unknown; Platform/Linux; Device/Generic; )
        C: Session: 12345
        C:
        S: RTSP/1.0 200 OK
        S: CSeq: 5
        S:
        END
    )");
    mPlayer.Play(lServer.URL(), Time(0));
    mPlayer.SetConfigParam("RTSP:UseDeviceStr", "TV");
    mPlayer.SetConfigParam("RTSP:SendReferrer", "there");
    mPlayer.Pause();
    mPlayer.SetConfigParam("RTSP:UseDeviceStr", "");
    mPlayer.SetConfigParam("RTSP:SendReferrer", "");
    mPlayer.Close();
    EXPECT_EQ("", lServer.Failure());
}

// ---------------------------------------------------------------------------- set-up of a track

/// Up to the answer to PLAY, interleaved.
std::string Playing(const std::string& aMedia) {
    return Described(aMedia) + "C: SETUP {*}\nC...\n" + OkTo("2") + "S: Session: 12345\nS:\n" + "C: PLAY {*}\nC...\n" +
           OkTo("3") + kPlayed;
}

TEST_F(RTSPRequestsTest, ATrackTakesItsPayloadTypeAndClockFromTheDescription) {
    const auto lFrame = [](unsigned aType, unsigned aSeq, std::uint32_t aTime) {
        const auto lPacket =
            TestSupport::RtpPacket().Type(aType).Seq(aSeq).Timestamp(aTime).Ssrc(7).Marker().Payload({0x65}).Build();
        return "S$ 0 " + TestSupport::Hex(lPacket) + "\n";
    };
    // Of 352 the low eight bits count, and a clock of 1000 Hz makes seconds of thousands.
    ScriptedServer lServer(Playing("S| m=video 0 RTP/AVP 352\nS| a=rtpmap:352 H264/1000\nS| a=control:track1\n") +
                           "SPLIT\n" + lFrame(97, 1, 0) + lFrame(96, 2, 0) + lFrame(96, 3, 2000) + "NOTIFY sent\n");
    mPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
    mPlayer.Play(lServer.URL(), Time(0));
    EXPECT_TRUE(lServer.Await("sent"));
    mPlayer.GetTrackPacket(0);
    EXPECT_EQ(2U, mPlayer.GetTrackReception(0).mPacketsReceived);
    EXPECT_EQ(Time(2, 1), mPlayer.GetTrackReception(0).mBufferedTime);
    EXPECT_EQ("", lServer.Failure());
}

TEST_F(RTSPRequestsTest, TracksTimeOutAsConfiguredBeforeAndAfterTheirSetUp) {
    Testing::ClockUnderTest lClock;
    const std::string lScript = Playing(kVideo);
    ScriptedServer lFirst(lScript);
    ScriptedServer lSecond(lScript);
    MediaPlayer lOther;
    for (MediaPlayer* lPlayer : {&mPlayer, &lOther}) {
        lPlayer->SetConfigParam("RTSP:UseInterleavedRTP", "1");
    }
    mPlayer.SetConfigParam("RTSP:TimeOutRTPAfter", "1");
    mPlayer.Play(lFirst.URL(), Time(0));
    lOther.Play(lSecond.URL(), Time(0));
    lOther.SetConfigParam("RTSP:TimeOutRTPAfter", "1");
    for (const bool lIsLate : {false, true}) {
        lClock.Advance(Time::Seconds(0.8));
        for (MediaPlayer* lPlayer : {&mPlayer, &lOther}) {
            lPlayer->GetTrackPacket(0);
            EXPECT_EQ(lIsLate, lPlayer->HasTimedOut());
        }
    }
    EXPECT_EQ("", lFirst.Failure());
    EXPECT_EQ("", lSecond.Failure());
}

}  // namespace
}  // namespace Player
