#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;
using TestSupport::Bytes;
using TestSupport::ScriptedServer;

class RTSPStartUpTest : public SessionTest {};

/// Two tracks, the first of which is set up over UDP, the second too.
const std::string kStart = R"(
    > DESCRIBE clip 1
    < 200 1 | SDP clip/ video audio range=0-20
    > SETUP clip/video 2 | UDP 0
    < 200 2 | Session: 5;timeout=60 | UDP 0
    > SETUP clip/audio 3 | Session: 5 | UDP 1
    < 200 3 | Session: 6 | UDP 1
    > PLAY clip 4 | Session: 5 | Range: npt=2.500000-
    < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=0,url=r/audio;seq=1;rtptime=0 | Range: npt=2-19.5
)";

TEST_F(RTSPStartUpTest, PlainStartOverUDP) {
    Serve(kStart);
    mHandler.Play(URL(), Time(5, 2));
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("SelectTracks video audio", "AvailableRange 0 20", "AcceptTrack video", "AcceptTrack audio",
                            "video: Flush", "audio: Flush", "PlayingRange 2 19.5", "video: State=WaitData",
                            "audio: State=WaitData"));
    EXPECT_EQ("", mServer->Failure());

    const std::string lPort = std::to_string(mServer->Port());
    const auto lPunching = [this](unsigned aTrack, unsigned aOffset) {
        return "Punching a hole to IP: 127.0.0.1, Port: " + std::to_string(mServer->Media(aTrack).RtpPort() + aOffset);
    };
    EXPECT_THAT(
        mReports.Messages(Severity::Info),
        ElementsAre("Connecting to RTSP server: 127.0.0.1:" + lPort + ", Via proxy: None", "Connected to IP: 127.0.0.1",
                    "Sending RTSP DESCRIBE for URL: " + URL(), "Got RTSP response: 200 OK",
                    "Sending RTSP SETUP for URL: " + URL("clip/video"), "Got RTSP response: 200 OK",
                    "Sending RTSP SETUP for URL: " + URL("clip/audio"), "Got RTSP response: 200 OK", lPunching(0, 0),
                    lPunching(0, 1), lPunching(1, 0), lPunching(1, 1), "Sending RTSP PLAY for URL: " + URL(),
                    "Got RTSP response: 200 OK", "RTSP: State -> WaitData"));
    for (const unsigned lTrack : {0U, 1U}) {
        EXPECT_EQ(Bytes(8), mServer->Media(lTrack).ReceiveRtp());
        EXPECT_EQ(Bytes(8), mServer->Media(lTrack).ReceiveRtcp());
    }
}

TEST_F(RTSPStartUpTest, PlainStartInterleaved) {
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3 | Session: 5 | TCP 1
        < 200 3 | Session: 5 | TCP 1
        > PLAY clip 4 | Session: 5 | Range: npt=0.000000-
        < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=0
    )");
    Play();
    EXPECT_EQ(2U, mPlayer.GetTrackCount());
    EXPECT_THAT(States(), ElementsAre("WaitData"));
    EXPECT_THAT(Reported("Punching"), ElementsAre());
}

TEST_F(RTSPStartUpTest, TracksThatAreNotPlayedGetNoSetup) {
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ text video@a video@b audio
        > SETUP clip/a 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3 | Session: 5 | TCP 1
        < 200 3 | TCP 1
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/a
        SPLIT
        S$ 2 {packet}
        NOTIFY sent
    )");
    mServer->Set("packet", TestSupport::Hex(TestSupport::RtpPacket().Type(97).Payload({1, 2}).Build()));
    mHandler.mRefused = {"b"};
    mHandler.Play(URL(), Time(0));
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("SelectTracks text a b audio", "AvailableRange 0 0", "AcceptTrack a",
                                                  "AcceptTrack b", "AcceptTrack audio", "a: Flush", "audio: Flush",
                                                  "PlayingRange 0 0", "a: State=WaitData", "audio: State=WaitData"));
    ASSERT_TRUE(mServer->Await("sent"));
    EXPECT_FALSE(mHandler.Fill(1)) << "it has one packet of the three seconds to buffer";
    EXPECT_THAT(States(), ElementsAre("WaitData", "Buffering"));
}

TEST_F(RTSPStartUpTest, TracksTakenOffTheListAreNotOffered) {
    class Picky : public RecordingHandler {
    public:
        void SelectTracks(const SharedPtr<Properties, SharedObject>& aSession,
                          std::list<SharedPtr<Properties, SharedObject>>& aTracks) override {
            aTracks.remove_if([](const auto& aTrack) { return aTrack->Is("MediaType", "video"); });
            RecordingHandler::SelectTracks(aSession, aTracks);
        }
    };
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/audio 2
        < 200 2 | Session: 5
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video
        > TEARDOWN clip 4
        < 200 4
        > DESCRIBE clip 5
        < 200 5 | SDP clip/ video
        // Nothing is left. Playing asks again.
        > DESCRIBE clip 6
        < 404 6
    )");
    Picky lHandler;
    lHandler.Play(URL(), Time(0));
    EXPECT_THAT(lHandler.TakeCalls(), ElementsAre("SelectTracks audio", "AvailableRange 0 0", "AcceptTrack audio",
                                                  "audio: Flush", "PlayingRange 0 0", "audio: State=WaitData"));
    lHandler.Play(URL(), Time(0));
    EXPECT_THAT(lHandler.TakeCalls(),
                ElementsAre("audio: State=Stopped", "Reset", "SelectTracks", "AvailableRange 0 0"));
    EXPECT_THROW(lHandler.Play(URL(), Time(0)), RTSPErr);
}

TEST_F(RTSPStartUpTest, EveryFormatFindsItsDepacketizer) {
    Serve(R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 200 OK
        S: CSeq: 1
        S: Content-Length: {length}
        S:
        S| v=0
        S| m=video 0 RTP/AVP 96
        S| a=rtpmap:96 H264/90000
        S| a=control:h264
        S| m=video 0 RTP/AVP 97
        S| a=rtpmap:97 MP4V-ES/90000
        S| a=control:mp4v
        S| m=audio 0 RTP/AVP 98
        S| a=rtpmap:98 MP4A-LATM/44100
        S| a=control:latm
        S| m=audio 0 RTP/AVP 99
        S| a=rtpmap:99 AMR/8000
        S| a=control:amr
        S| m=audio 0 RTP/AVP 100
        S| a=rtpmap:100 mpeg4-generic/44100/2
        S| a=fmtp:100 mode=AAC-hbr;sizeLength=13;indexLength=3;indexDeltaLength=3
        S| a=control:aac
        S| m=audio 0 RTP/SAVP 101
        S| a=rtpmap:101 AMR/8000
        S| a=control:secret
    )");
    mHandler.mRefused = {"h264", "mp4v", "latm", "amr", "aac"};
    mHandler.Play(URL(), Time(0));
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("SelectTracks h264 mp4v latm amr aac secret", "AvailableRange 0 0", "AcceptTrack h264",
                            "AcceptTrack mp4v", "AcceptTrack latm", "AcceptTrack amr", "AcceptTrack aac"));
    for (const auto& lTrack : mHandler.mAccepted) {
        EXPECT_EQ("Sample", lTrack->Get("Transport")) << lTrack->Get("Id");
    }
}

TEST_F(RTSPStartUpTest, NothingIsSetUpForAPresentationWithoutPlayableTracks) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ text
        > DESCRIBE other 2
        < 200 2 | SDP other/ video
        > SETUP other/video 3 | UDP 0
        < 200 3 | Session: 5 | UDP 0
        > PLAY other 4
        < 200 4 | RTP-Info: url=r/video
    )");
    Play();
    EXPECT_EQ(0U, mPlayer.GetTrackCount());
    EXPECT_TRUE(mPlayer.IsEnded());
    EXPECT_EQ("", mPlayer.GetCommonInfo()->Get("SessionName"));
    mPlayer.Pause();
    EXPECT_FALSE(mPlayer.Fill(0));
    EXPECT_FALSE(mPlayer.Produce(0));
    Play("other");
    EXPECT_EQ(1U, mPlayer.GetTrackCount());
}

TEST_F(RTSPStartUpTest, RefusedRequestsTellStatusAndReason) {
    struct Case {
        const char* mStatus;
        unsigned mError;
        const char* mText;
    };
    const char* const kDescribed = R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
    )";
    const char* const kSetUp = R"(
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | UDP 0
    )";
    for (const Case& lCase :
         {Case{"404", 0x404, "404 Not Found"}, Case{"454", 0x454, "454 Session Not Found"},
          Case{"459", 0x459, "459 Aggregate Operation Not Allowed"}, Case{"500", 0x500, "500 Internal Server Error"}}) {
        const std::string lStatus = lCase.mStatus;
        const auto lExpect = [&](const std::string& aFunction, const std::string& aDialogue) {
            const ScriptedServer lServer(Dialogue(aDialogue));
            MediaPlayer lPlayer;
            ExpectThrows<RTSPErr>(lCase.mError, "RTSP::" + aFunction + ": " + lCase.mText,
                                  [&] { lPlayer.Play(lServer.URL(), Time(0)); });
        };
        lExpect("DoDescribe(): DESCRIBE failed", "> DESCRIBE clip 1\n< " + lStatus + " 1");
        lExpect("DoPlay(): SETUP failed", kDescribed + ("> SETUP clip/video 2\n< " + lStatus + " 2"));
        lExpect("DoPlay(): PLAY failed", std::string(kDescribed) + kSetUp + "> PLAY clip 3\n< " + lStatus + " 3");
    }
}

TEST_F(RTSPStartUpTest, StatusAndReasonMayBeUnknown) {
    Serve(R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 599
        S: CSeq: 1
        S:
        > DESCRIBE clip 2
        CLOSE
        ACCEPT
        > DESCRIBE clip 3
        < 404 3
    )");
    ExpectThrows<RTSPErr>(0x599, "RTSP::DoDescribe(): DESCRIBE failed: 599 Unknown", [this] { Play(); });
    ExpectThrows<RTSPErr>(0, "RTSP::DoDescribe(): DESCRIBE failed: 000 Unknown", [this] { Play(); });
    ExpectThrows<RTSPErr>(0x404, "RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found", [this] { Play(); });
}

TEST_F(RTSPStartUpTest, CanPlayAfterEveryRefusal) {
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 404 1
        // Nothing is described yet.
        > DESCRIBE clip 2
        < 200 2 | SDP clip/ video audio
        > SETUP clip/video 3 | TCP 0
        < 500 3
        // Described, but no session: set up anew.
        > SETUP clip/video 4 | TCP 0
        < 200 4 | Session: 5 | TCP 0
        > SETUP clip/audio 5 | Session: 5 | TCP 1
        < 461 5
        // There is a session: it ends first.
        > TEARDOWN clip 6 | Session: 5
        < 200 6
        > DESCRIBE clip 7
        < 200 7 | SDP clip/ video
        > SETUP clip/video 8 | TCP 0
        < 200 8 | Session: 6
        > PLAY clip 9 | Session: 6 | Range: npt=0.000000-
        < 454 9
        > TEARDOWN clip 10 | Session: 6
        < 200 10
        > DESCRIBE clip 11
        < 200 11 | SDP clip/ video
        > SETUP clip/video 12 | TCP 0
        < 200 12 | Session: 7
        > PLAY clip 13 | Session: 7 | Range: npt=0.000000-
        < 200 13 | RTP-Info: url=r/video
    )");
    for (const unsigned lError : {0x404U, 0x500U, 0x461U, 0x454U}) {
        try {
            Play();
            ADD_FAILURE() << lError;
        } catch (const RTSPErr& lException) { EXPECT_EQ(lError, lException.Error()); }
        EXPECT_THAT(States(), ElementsAre());
    }
    Play();
    EXPECT_EQ(1U, mPlayer.GetTrackCount());
    EXPECT_THAT(States(), ElementsAre("WaitData"));
}

TEST_F(RTSPStartUpTest, ARefusedDescribeThatClosesTheConnectionResetsAll) {
    Serve(R"(
        > DESCRIBE clip 1
        < 404 1 | Connection: keep-alive, close
        > DESCRIBE clip 2
        < 404 2 | Connection: cLoSe
        END
        ACCEPT
        > DESCRIBE clip 1
        < 454 1 | connection: Close, foo
        END
        ACCEPT
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ text
    )");
    const std::string lFailed = "RTSP::DoDescribe(): DESCRIBE failed: ";
    ExpectThrows<RTSPErr>(0x404, lFailed + "404 Not Found", [this] { Play(); });
    ExpectThrows<RTSPErr>(0x404, lFailed + "404 Not Found", [this] { Play(); });
    ExpectThrows<RTSPErr>(0x454, lFailed + "454 Session Not Found", [this] { Play(); });
    Play();
}

TEST_F(RTSPStartUpTest, AnAcceptedDescribeMayCloseTheConnection) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Connection: Close | SDP clip/ video
        > SETUP clip/video 2
        < 404 2
    )");
    EXPECT_THROW(Play(), RTSPErr);
}

TEST_F(RTSPStartUpTest, TheFirstSetupHasToNameTheSession) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2 | UDP *
        < 200 2 | UDP *
        > SETUP clip/video 3 | UDP *
        < 200 3 | session:   a b;c;d
        > PLAY clip 4 | Session: a b | Range: npt=0.000000-
        < 200 4 | RTP-Info: url=r/video
    )");
    ExpectThrows<RTSPErr>(2, "RTSP::RecvSetup(): Invalid SETUP response: Session missing", [this] { Play(); });
    Play();
}

TEST_F(RTSPStartUpTest, ThePlayResponseHasToHaveRTPInfo) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2
        < 200 2 | Session: 5
        > PLAY clip 3
        < 200 3 | Range: npt=3-4
        > TEARDOWN clip 4 | Session: 5
        < 200 4
    )");
    ExpectThrows<RTSPErr>(2, "RTSP::RecvPlay(): Invalid PLAY response: RTP-Info missing",
                          [this] { mHandler.Play(URL(), Time(0)); });
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("SelectTracks video", "AvailableRange 0 0", "AcceptTrack video"));
    mHandler.Close();
}

TEST_F(RTSPStartUpTest, WhatTheServerCanDoIsKeptWhenItDoesNotSay) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-pipelined | SDP clip/ text
        > DESCRIBE other 2
        < 200 2 | SDP other/ video
        > SETUP other/video 3 | Pipelined-Requests: 00000001 | UDP *
        > PLAY other 4 | Require: 3gpp-pipelined | Pipelined-Requests: 00000001 | Range: npt=0.000000-
        < 404 3
        < 404 4
        > DESCRIBE third 5
        < 200 5 | Supported: 3gpp-switch-req-sdp | SDP third/ video
        > SETUP third/video 6 | UDP *
        < 404 6
    )");
    Play();
    EXPECT_THROW(Play("other"), RTSPErr);
    EXPECT_THROW(Play("third"), RTSPErr);
}

}  // namespace
}  // namespace Player::MediaSessions
