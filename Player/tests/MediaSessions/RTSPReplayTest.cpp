#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <new>

#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {
namespace {

using testing::ElementsAre;
using TestSupport::ScriptedServer;

class RTSPReplayTest : public SessionTest {};

TEST_F(RTSPReplayTest, TheSameServerWithoutSwitchingIsSetUpAnew) {
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | Supported: 3gpp-foo | SDP clip/ video audio
        > SETUP clip/video 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3 | Session: 5 | TCP 1
        < 200 3 | TCP 1
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video
        > TEARDOWN clip 5 | Session: 5
        < 200 5
        > DESCRIBE other 6
        < 200 6 | SDP other/ audio
        > SETUP other/audio 7 | TCP 0
        < 200 7 | Session: 6 | TCP 0
        > PLAY other 8 | Session: 6 | Range: npt=0.000000-
        < 200 8 | RTP-Info: url=r/audio
    )");
    mHandler.Play(URL(), Time(0));
    mHandler.TakeCalls();
    mHandler.Play(URL("other"), Time(0));
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("video: State=Stopped", "audio: State=Stopped", "Reset",
                                                  "SelectTracks audio", "AvailableRange 0 0", "AcceptTrack audio",
                                                  "audio: Flush", "PlayingRange 0 0", "audio: State=WaitData"));
    EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped", "WaitData"));
}

TEST_F(RTSPReplayTest, ATeardownRefusedOnTheSameServerResetsNothing) {
    Interleave();
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2 | TCP 0
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip/audio 3 | Session: 5 | TCP 1
        < 200 3 | TCP 1
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video
        > TEARDOWN clip 5 | Session: 5
        < 454 5 | Connection: Close
        > DESCRIBE other 6
        < 200 6 | SDP other/ audio
        > SETUP other/audio 7 | Session: 5 | TCP 0
        < 200 7 | Session: 6 | TCP 0
        > PLAY other 8 | Session: 5 | Range: npt=0.000000-
        < 200 8 | RTP-Info: url=r/audio
    )");
    Play();
    Play("other");
    EXPECT_EQ(1U, mPlayer.GetTrackCount());
    EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped", "WaitData"));
}

const char* const kOneTrack = R"(
    > DESCRIBE clip 1
    < 200 1 | SDP clip/ video
    > SETUP clip/video 2
    < 200 2 | Session: 5
    > PLAY clip 3
    < 200 3 | RTP-Info: url=r/video
)";

TEST_F(RTSPReplayTest, AServerThatClosesAfterTheTeardownIsConnectedToAtOnce) {
    Serve(kOneTrack + std::string(R"(
        > TEARDOWN clip 4 | Session: 5
        < 200 4 | Connection: close
        END
        ACCEPT
        > DESCRIBE other 5
        < 200 5 | SDP other/ text
    )"));
    Play();
    mReports.Clear();
    Play("other");
    EXPECT_THAT(
        mReports.Messages(Severity::Info),
        ElementsAre("Sending RTSP TEARDOWN for URL: " + URL() + " ", "Got RTSP response: 200 OK",
                    "Connecting to RTSP server: 127.0.0.1:" + std::to_string(mServer->Port()) + ", Via proxy: None",
                    "Connected to IP: 127.0.0.1", "RTSP: State -> Stopped",
                    "Sending RTSP DESCRIBE for URL: " + URL("other"), "Got RTSP response: 200 OK"));
}

TEST_F(RTSPReplayTest, ASessionThatWasTornDownIsOverWithoutAConnectionToo) {
    Serve(kOneTrack + std::string(R"(
        > TEARDOWN clip 4
        < 200 4 | Connection: close
        END
        ACCEPT
        > DESCRIBE clip 5
        < 200 5 | SDP clip/ text
    )"));
    Play();
    // Not an address of this machine: there is no way back to the server.
    mPlayer.SetConfigParam("RTSP:UseLocalIP", "192.0.2.1");
    EXPECT_THROW(Play(), NetworkErr);
    EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped"));
    mPlayer.SetConfigParam("RTSP:UseLocalIP", "");
    Play();
}

TEST_F(RTSPReplayTest, WithoutTracksThereIsNothingToSwitch) {
    Serve(kOneTrack + std::string(R"(
        > TEARDOWN clip 4 | Session: 5
        < 454 4
        > DESCRIBE other 5
        < 200 5 | SDP other/ video
        // No ports are left to set it up.
        > TEARDOWN other 6 | Session: 5
        < 454 6
        > DESCRIBE third 7
        < 200 7 | Supported: 3gpp-switch-req-sdp | SDP third/ video
        > SETUP third/video 8 | Session: 5 | UDP *
        < 200 8
        > PLAY third 9 | Session: 5 | Range: npt=0.000000-
        < 200 9 | RTP-Info: url=r/video
    )"));
    Play();
    const unsigned lPort = mServer->Media(1).RtpPort();
    mPlayer.SetConfigParam("RTSP:UseUDPPortsFrom", std::to_string(lPort));
    mPlayer.SetConfigParam("RTSP:UseUDPPortsTo", std::to_string(lPort + 2));
    EXPECT_THROW(Play("other"), RTPErr);
    mPlayer.SetConfigParam("RTSP:UseUDPPortsTo", "");
    mPlayer.SetConfigParam("RTSP:UseUDPPortsFrom", "");
    mPlayer.Pause();
    EXPECT_FALSE(mPlayer.TrackHasPacket(0));
    Play("third");
    EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped", "WaitData"));
}

TEST_F(RTSPReplayTest, FewerTracksThanTheTransportStillHas) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2
        < 200 2 | Session: 5
        > SETUP clip/audio 3
        < 200 3
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video
        > TEARDOWN clip 5
        < 454 5
        > DESCRIBE other 6
        < 200 6 | SDP other/ text
        > PLAY other 7 | Session: 5 | Range: npt=1.000000-
        < 200 7 | RTP-Info: url=r/text,url=r/video,url=r/audio
    )");
    Play();
    Play("other");
    EXPECT_EQ(0U, mPlayer.GetTrackCount());
    mPlayer.Seek(Time(1, 1));
    EXPECT_FALSE(mPlayer.TrackHasPacket(0));
}

TEST_F(RTSPReplayTest, TheDescriptionBelongsToItsURL) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2
        < 404 2
        // The same URL: what is described still holds.
        > SETUP clip/video 3
        < 404 3
        > DESCRIBE clip2 4
        < 200 4 | SDP clip2/ audio
        > SETUP clip2/audio 5
        < 404 5
    )");
    EXPECT_THROW(mHandler.Play(URL(), Time(0)), RTSPErr);
    EXPECT_THROW(mHandler.Play(URL(), Time(0)), RTSPErr);
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("SelectTracks video", "AvailableRange 0 0", "AcceptTrack video"));
    EXPECT_THROW(mHandler.Play(URL("clip2"), Time(0)), RTSPErr);
    EXPECT_THAT(mHandler.TakeCalls(),
                ElementsAre("Reset", "SelectTracks audio", "AvailableRange 0 0", "AcceptTrack audio"));
}

TEST_F(RTSPReplayTest, AfterATeardownThePlayingRangeIsForgotten) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > SETUP clip/video 2
        < 200 2 | Session: 5
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video | Range: npt=5-9
        > TEARDOWN clip 4
        < 200 4
        > DESCRIBE other 5
        < 200 5 | SDP other/ video
        > SETUP other/video 6
        < 200 6 | Session: 6
        > PLAY other 7
        < 200 7 | RTP-Info: url=r/video
    )");
    mHandler.Play(URL(), Time(0));
    mHandler.Play(URL("other"), Time(0));
    const auto lCalls = mHandler.TakeCalls();
    EXPECT_THAT(lCalls, testing::Contains("PlayingRange 5 9"));
    EXPECT_THAT(lCalls, testing::Contains("PlayingRange 0 0"));
}

/// Finds no memory for a track.
class ForgetfulHandler : public RecordingHandler {
public:
    SharedPtr<Processor, SharedObject> AcceptTrack(const SharedPtr<Properties, SharedObject>& aTrack) override {
        if (aTrack->Get("Id") == mForgets) {
            mForgets.clear();
            throw std::bad_alloc();
        }
        return RecordingHandler::AcceptTrack(aTrack);
    }

    std::string mForgets;
};

// What was accepted in part must not be played in part, as if it were all.
TEST_F(RTSPReplayTest, APresentationThatWasAcceptedInPartIsDescribedAnew) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > DESCRIBE clip 2
        < 200 2 | SDP clip/ video audio
        > SETUP clip/video 3
        < 404 3
    )");
    ForgetfulHandler lHandler;
    lHandler.mForgets = "audio";
    EXPECT_THROW(lHandler.Play(URL(), Time(0)), std::bad_alloc);
    EXPECT_THAT(lHandler.TakeCalls(),
                ElementsAre("SelectTracks video audio", "AvailableRange 0 0", "AcceptTrack video", "Reset"));
    EXPECT_THROW(lHandler.Play(URL(), Time(0)), RTSPErr);
    EXPECT_THAT(lHandler.TakeCalls(), ElementsAre("SelectTracks video audio", "AvailableRange 0 0", "AcceptTrack video",
                                                  "AcceptTrack audio"));
}

TEST_F(RTSPReplayTest, TracksThatWentWithTheirSessionAreDiscardedBeforeNewOnes) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio
        > SETUP clip/video 2
        < 200 2 | Session: 5
        > SETUP clip/audio 3
        < 200 3
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video
        > TEARDOWN clip 5
        < 200 5
        END
        ACCEPT
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ audio
        > SETUP clip/audio 2
        < 404 2
    )");
    Play();
    mPlayer.Close();
    EXPECT_EQ(2U, mPlayer.GetTrackCount()) << "what is queued can still be taken out";
    EXPECT_THROW(Play(), RTSPErr);
    EXPECT_EQ(1U, mPlayer.GetTrackCount());
    EXPECT_EQ("audio", mPlayer.GetTrackInfo(0)->Get("MediaType"));
}

TEST_F(RTSPReplayTest, AHandlerWithoutTracksHasNothingToDiscard) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video
        > DESCRIBE other 2
        < 200 2 | SDP other/ video
    )");
    mHandler.mRefused = {"video"};
    mHandler.Play(URL(), Time(0));
    mHandler.Play(URL("other"), Time(0));
    EXPECT_THAT(mHandler.TakeCalls(), ElementsAre("SelectTracks video", "AvailableRange 0 0", "AcceptTrack video",
                                                  "SelectTracks video", "AvailableRange 0 0", "AcceptTrack video"));
}

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

/// Leads to another server: the first one is told that it is over, whatever it says to that.
class RTSPOtherServerTest : public RTSPReplayTest {
protected:
    void PlayBoth(const std::string& aEnd, const std::string& aAwaited = "") {
        Serve(kStart + aEnd);
        Play("clip", Time(5, 2));
        if (!aAwaited.empty()) { ASSERT_TRUE(mServer->Await(aAwaited)); }
        ScriptedServer lOther(Dialogue(R"(
            > DESCRIBE other 1
            < 200 1 | SDP other/ video
            > SETUP other/video 2
            < 200 2 | Session: 9
            > PLAY other 3 | Session: 9 | Range: npt=0.000000-
            < 200 3 | RTP-Info: url=r/video
        )"));
        mPlayer.Play(lOther.URL("other"), Time(0));
        EXPECT_EQ(1U, mPlayer.GetTrackCount());
        EXPECT_EQ("", lOther.Failure());
        EXPECT_THAT(States(), ElementsAre("WaitData", "Stopped", "WaitData"));
    }
};

TEST_F(RTSPOtherServerTest, TheFirstIsTornDown) {
    PlayBoth(R"(
        > TEARDOWN clip 5 | Session: 5
        < 200 5
        END
    )");
}

TEST_F(RTSPOtherServerTest, TheFirstRefusesTheTeardown) {
    PlayBoth(R"(
        > TEARDOWN clip 5 | Session: 5
        < 454 5
        END
    )");
}

TEST_F(RTSPOtherServerTest, TheFirstAnswersNonsense) {
    PlayBoth(R"(
        > TEARDOWN clip 5 | Session: 5
        < 200 17
        END
    )");
    EXPECT_EQ(1U, mReports.Count(Severity::Error, "RTSP::RecvResponse(): Invalid response: CSeq mismatch"));
}

TEST_F(RTSPOtherServerTest, TheFirstHasGone) {
    PlayBoth(R"(
        SPLIT
        RESET
        NOTIFY gone
        // The request comes over a connection that is opened for it.
        ACCEPT
        > TEARDOWN clip 5 | Session: 5
        RESET
    )",
             "gone");
}

/// Holds a TCP port at which nobody listens.
class DeafPort {
public:
    DeafPort() : mSocket(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in lAddress = {};
        lAddress.sin_family = AF_INET;
        lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t lSize = sizeof(lAddress);
        auto* const lGeneric = reinterpret_cast<sockaddr*>(&lAddress);
        EXPECT_EQ(0, bind(mSocket, lGeneric, lSize));
        EXPECT_EQ(0, getsockname(mSocket, lGeneric, &lSize));
        mPort = ntohs(lAddress.sin_port);
    }
    DeafPort(const DeafPort&) = delete;
    DeafPort& operator=(const DeafPort&) = delete;
    ~DeafPort() { close(mSocket); }

    std::string URL() const { return "rtsp://127.0.0.1:" + std::to_string(mPort) + "/clip"; }

private:
    int mSocket;
    unsigned mPort = 0;
};

TEST_F(RTSPReplayTest, AServerThatCantBeReachedLeavesNothingBehind) {
    Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ text
        END
        ACCEPT
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ text
    )");
    Play();
    EXPECT_THROW(mPlayer.Play(DeafPort().URL(), Time(0)), NetworkErr);
    Play();
}

}  // namespace
}  // namespace Player::MediaSessions
