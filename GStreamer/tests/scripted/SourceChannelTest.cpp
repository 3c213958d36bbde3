#include <chrono>
#include <thread>

#include "support/DebugCapture.hpp"
#include "support/SourceTest.hpp"
#include "support/TimersRun.hpp"

namespace ElementTest {
namespace {

/// A location set while the element is PLAYING or PAUSED, and where it is only stored.
class SourceChannelTest : public SourceTest {
protected:
    /// PLAYING, both access units of the start delivered, and nothing remembered of it.
    void StartPlaying(const std::string& aDialogue) {
        Start(aDialogue, GST_STATE_PLAYING);
        ASSERT_NE(nullptr, Element().Sink(0));
        ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
        Element().Sink(0)->Clear();
        Messages();
    }
    void ChangeTo(const std::string& aPath, std::size_t aServer = 0) { SetLocation(mServers[aServer]->URL(aPath)); }
    std::string Kinds(unsigned aTrack = 0) {
        return nullptr == Element().Sink(aTrack) ? "no pad" : Element().Sink(aTrack)->Kinds();
    }
};

class SourceChannelTestSlow : public SourceChannelTest {
protected:
    const TimersRun mTimers;
};

std::string Switching() {
    std::string lClip = kClip;
    lClip.replace(lClip.find("200 1 |"), 7, "200 1 | Supported: 3gpp-switch-req-sdp |");
    return lClip;
}

const char* const kOther = R"(
    > TEARDOWN clip 4 | Session: 5
    < 200 4
    > DESCRIBE other 5
    < 200 5 | SDP other/ video range=0-9
    > SETUP other/video 6 | UDP 1
    < 200 6 | Session: 6 | UDP 1
    > PLAY other 7 | Session: 6 | Range: npt=0.000000-
    < 200 7 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-9
    VIDEO1 1 0.0 0.5
)";

TEST_F(SourceChannelTest, OnTheSameServerWithoutSwitchingItIsSetUpAnew) {
    StartPlaying(kClip + std::string(kOther) + "PAUSE\nTEARDOWN");
    const DebugCapture lLog("virertsp_source");
    ChangeTo("other");
    EXPECT_EQ(GST_STATE_PLAYING, Element().State());
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ("flush-start flush-stop segment buffer buffer", Kinds());
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG,
                             "StreamStartTime: 0, StreamEndTime: 9000000000, StreamDuration: "
                             "9000000000"));
    EXPECT_EQ(1U, Element().CountMessages("duration"));
    EXPECT_THAT(Element().PadSignals(), ElementsAre("src0", "no-more-pads")) << "the same caps keep their pad";
}

TEST_F(SourceChannelTest, OnTheSameServerWithSwitchingOnePlayDoes) {
    StartPlaying(Switching() + R"(
        > PLAY other 4 | Session: 5 | Require: 3gpp-switch-req-sdp | SDP-Requested: 1 | Range: npt=0.000000-
        < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-9 | SDP - video range=0-9
        VIDEO 1 0.0 0.5
        PAUSE
        TEARDOWN
    )");
    ChangeTo("other");
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ("flush-start flush-stop segment buffer buffer", Kinds());
    EXPECT_EQ(GST_STATE_PLAYING, Element().State());
}

TEST_F(SourceChannelTest, OnAnotherServerTheFirstIsLeft) {
    Serve(std::string(kClip) + "PAUSE\nTEARDOWN");
    StartPlaying(std::string(kClip) + "TEARDOWN\nNOTIFY left");
    ChangeTo("clip", 0);
    EXPECT_TRUE(mServers[1]->Await("left"));
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ("flush-start flush-stop segment buffer buffer", Kinds());
}

TEST_F(SourceChannelTest, MoreTracksGetPadsAndFewerLoseThem) {
    Serve(std::string(kTwoTracks) + "TEARDOWN");
    Serve(std::string(kClip) + "PAUSE\nTEARDOWN");
    StartPlaying(std::string(kClip) + "TEARDOWN");
    ChangeTo("clip", 0);
    EXPECT_THAT(Element().PadSignals(), ElementsAre("src0", "no-more-pads", "src1", "no-more-pads"));
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    ASSERT_TRUE(Element().Sink(1)->Await("buffer", 2));
    ChangeTo("clip", 1);
    EXPECT_THAT(Element().PadSignals(), ElementsAre("src0", "no-more-pads", "src1", "no-more-pads", "-src1"));
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 4));
}

TEST_F(SourceChannelTest, OtherCapsGetAnotherPad) {
    Serve(std::string(kClip) + "PAUSE\nTEARDOWN");
    StartPlaying(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ audio:97:44100:MP4A-LATM range=0-20
        > SETUP clip/audio 2 | UDP 1
        < 200 2 | Session: 5 | UDP 1
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/audio;seq=1;rtptime=44100 | Range: npt=0-20
        AUDIO 1 0.0 0.5
        TEARDOWN
    )");
    ChangeTo("clip", 0);
    EXPECT_THAT(Element().PadSignals(), ElementsAre("src0", "no-more-pads", "-src0", "src0", "no-more-pads"));
    ASSERT_NE(nullptr, Element().Sink(0));
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
}

TEST_F(SourceChannelTest, InReadyAndNullALocationIsOnlyStored) {
    Serve(std::string(kClip) + "PAUSE\nTEARDOWN");
    SetLocation("rtsp://127.0.0.1:1/first");
    To(GST_STATE_READY);
    const DebugCapture lLog("virertsp_source");
    ChangeTo("clip", 0);
    EXPECT_TRUE(lLog.All().empty());
    EXPECT_THAT(Messages({"error", "warning"}), IsEmpty());
    To(GST_STATE_PLAYING);
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
}

TEST_F(SourceChannelTest, ALocationThatIsClearedChangesNothing) {
    StartPlaying(std::string(kClip) + "PAUSE\nTEARDOWN");
    SetLocation("");
    Element().SetText("location", nullptr);
    EXPECT_EQ(GST_STATE_PLAYING, Element().State());
    EXPECT_EQ("", Kinds());
}

TEST_F(SourceChannelTest, WithoutTheNetworkItIsRefused) {
    Serve("ACCEPT");
    StartPlaying(std::string(kClip) + "AWAIT checked\nPAUSE\nTEARDOWN");
    Element().SetNetwork(false);
    const DebugCapture lLog("virertsp_source");
    ChangeTo("clip", 0);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_WARNING, "Not allowed to change channels when network is not available"));
    EXPECT_THAT(Messages({"warning"}), IsEmpty());
    EXPECT_EQ("", Kinds());
    // Nobody asked the new server for anything.
    EXPECT_THAT(mServers[0]->Failure(), HasSubstr("did not connect"));
    mServers.erase(mServers.begin());
    mServers[0]->Notify("checked");
    Element().SetNetwork(true);
}

TEST_F(SourceChannelTest, AFailureLeavesTheTasksRunningAndThePadsUnflushed) {
    Serve("> DESCRIBE other 1\n< 404 1");
    StartPlaying(std::string(kClip) + "TEARDOWN");
    ChangeTo("other", 0);
    EXPECT_EQ(1U, Element().CountMessages("error " + std::to_string(0x00110404)));
    EXPECT_EQ(0U, Element().CountMessages("other error"));
    EXPECT_EQ("flush-start flush-stop", Kinds().substr(0, 22));
    EXPECT_EQ(GST_STATE_PLAYING, Element().State());
    // A second try gets through.
    Serve(std::string(kClip) + "PAUSE\nTEARDOWN");
    ChangeTo("clip", 2);
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
}

TEST_F(SourceChannelTest, AFailureThatLeavesFewerTracksThanStreamsIsSurvived) {
    Serve(R"(
        > DESCRIBE other 1
        < 200 1 | SDP other/ video range=0-9
        > SETUP other/video 2
        < 404 2
    )");
    StartPlaying(std::string(kTwoTracks) + "TEARDOWN");
    ChangeTo("other", 0);
    EXPECT_EQ(1U, Element().CountMessages("error " + std::to_string(0x00110404)));
    EXPECT_EQ("flush-start flush-stop", Kinds(0).substr(0, 22));
    // A track that is no more has ended and timed out.
    To(GST_STATE_PAUSED);
    To(GST_STATE_NULL);
}

TEST_F(SourceChannelTest, ASeekAfterwardsGoesToTheNewChannel) {
    Serve(std::string(kClip) + R"(
        PAUSE
        > PLAY clip 5 | Session: 5 | Range: npt=3.000000-
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=360000 | Range: npt=3-20
        VIDEO 10 3.0 3.5
        PAUSE
        TEARDOWN
    )");
    StartPlaying(std::string(kClip) + "TEARDOWN");
    ChangeTo("clip", 0);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_TRUE(Element().Seek(3 * GST_SECOND));
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 4));
}

TEST_F(SourceChannelTest, WhilePausedTheServerPlaysTheNewOneAndThePadsWaitForPlaying) {
    Serve(std::string(kClip) + "TEARDOWN");
    StartPlaying(std::string(kClip) + "PAUSE\nTEARDOWN");
    To(GST_STATE_PAUSED);
    ChangeTo("clip", 0);
    EXPECT_EQ("flush-start", Kinds()) << "flushed by the pause";
    To(GST_STATE_PLAYING);
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 2));
    EXPECT_EQ("flush-start flush-stop segment buffer buffer", Kinds());
    // The flag is gone with it: the next change flushes by itself.
    Element().Sink(0)->Clear();
    SetLocation("rtsp://127.0.0.1:1/nobody");
    EXPECT_EQ("flush-start flush-stop", Kinds().substr(0, 22));
}

TEST_F(SourceChannelTestSlow, WhilePausedTheNewServerIsPausedWhenTheElementStaysSo) {
    Serve(std::string(kClip) + R"(
        > PAUSE clip 4
        < 200 4
        NOTIFY paused
        // Resumed, not played from where the old channel was.
        > PLAY clip 5 | Session: 5
        < 200 5 | RTP-Info: url=r/video;seq=10;rtptime=180000 | Range: npt=1-20
        VIDEO 10 1.0 1.5
        PAUSE
        TEARDOWN
    )");
    StartPlaying(std::string(kClip) + "PAUSE\nTEARDOWN");
    To(GST_STATE_PAUSED);
    ChangeTo("clip", 0);
    ASSERT_TRUE(mServers[0]->Await("paused"));
    const DebugCapture lLog("virertsp_source");
    To(GST_STATE_PLAYING);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Resuming"));
    ASSERT_TRUE(Element().Sink(0)->Await("buffer", 4));
    EXPECT_EQ(1U, Element().Sink(0)->Count("flush-start"));
    EXPECT_EQ(1U, Element().Sink(0)->Count("flush-stop"));
}

TEST_F(SourceChannelTest, RightAfterTheStartItFlushesAndRunsAtOnce) {
    Serve(std::string(kClip) + "AWAIT playing\nPAUSE\nTEARDOWN");
    Start(std::string(kClip) + "TEARDOWN", GST_STATE_PAUSED);
    ChangeTo("clip", 0);
    EXPECT_EQ("flush-start flush-stop", Kinds());
    To(GST_STATE_PLAYING);
    EXPECT_TRUE(Element().Sink(0)->Await("buffer", 2));
    mServers[0]->Notify("playing");
}

}  // namespace
}  // namespace ElementTest
