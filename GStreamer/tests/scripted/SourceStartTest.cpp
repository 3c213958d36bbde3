#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "support/DebugCapture.hpp"
#include "support/Leg.hpp"
#include "support/SourceTest.hpp"

namespace ElementTest {
namespace {

/// READY to PAUSED, and what the element says of it.
class SourceStartTest : public SourceTest {
protected:
    void ExpectRefused() {
        ASSERT_NE(GST_STATE_CHANGE_FAILURE, Element().Set(GST_STATE_READY));
        EXPECT_EQ(GST_STATE_CHANGE_FAILURE, Element().Set(GST_STATE_PAUSED));
        EXPECT_EQ(GST_STATE_READY, GST_STATE(Get()));
    }
    void ExpectNothingTold() { EXPECT_THAT(Messages({"error", "warning", "duration", "buffering"}), IsEmpty()); }
    /// One warning that has this in it, the application message where there is one, and never an error.
    void ExpectTold(const std::string& aWarning, const std::vector<std::string>& aErrors = {}) {
        std::vector<std::string> lErrors;
        std::vector<std::string> lWarnings;
        for (const std::string& lMessage : Messages({"error", "warning", "other"})) {
            EXPECT_NE("other error", lMessage);
            if (0 == lMessage.compare(0, 6, "error ")) { lErrors.push_back(lMessage); }
            if (0 == lMessage.compare(0, 8, "warning ")) { lWarnings.push_back(lMessage); }
        }
        EXPECT_EQ(aErrors, lErrors);
        EXPECT_THAT(lWarnings, ElementsAre(HasSubstr(aWarning)));
    }
};

TEST_F(SourceStartTest, FailsWithoutALocation) {
    const DebugCapture lLog("virertsp_source");
    ExpectRefused();
    ExpectNothingTold();
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Ready -> Paused"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_WARNING, "No location"));
}

TEST_F(SourceStartTest, FailsAfterALocationThatIsNone) {
    SetLocation("rtsp://127.0.0.1/clip");
    SetLocation("clip");
    ExpectRefused();
    ExpectNothingTold();
}

TEST_F(SourceStartTest, FailsWithoutTheNetworkAndAsksNobody) {
    // Whoever connects would be an unexpected client.
    SetLocation(Serve("ACCEPT").URL());
    Element().SetNetwork(false);
    const DebugCapture lLog("virertsp_source");
    ExpectRefused();
    ExpectNothingTold();
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_WARNING, "Not allowed when network is not available"));
    mElement.reset();
    EXPECT_THAT(mServers.back()->Failure(), HasSubstr("did not connect"));
    mServers.clear();
}

TEST_F(SourceStartTest, FailsWithoutTracks) {
    SetLocation(Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ text
        C...
    )")
                    .URL());
    const DebugCapture lLog("virertsp_source");
    ExpectRefused();
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_ERROR, "No tracks"));
    ExpectTold("has no track that can be played");
    mElement.reset();
    mServers.back()->Failure();
    mServers.clear();
}

TEST_F(SourceStartTest, TellsTheStatusOfARefusalOnceAsApplicationMessageAndAsWarning) {
    SetLocation(Serve("> DESCRIBE clip 1\n< 404 1").URL());
    const DebugCapture lLog("virertsp_source");
    ExpectRefused();
    ExpectTold("127.0.0.1:" + std::to_string(mServers.back()->Port()) +
                   "/clip failed: the server has no such presentation (404)",
               {"error " + std::to_string(0x00110404)});
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_ERROR,
                             "Exception. Code: 1115140, Category: 17, Error: 1028, Message: "
                             "RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found\r\n"));
}

TEST_F(SourceStartTest, TellsThatTheServerEndedTheConnection) {
    SetLocation(Serve("> DESCRIBE clip 1\nCLOSE").URL());
    ExpectRefused();
    EXPECT_EQ(1U, Messages({"error"}).size());
}

TEST_F(SourceStartTest, MayBeTriedAgain) {
    SetLocation(
        Serve(std::string("> DESCRIBE clip 1\n< 404 1 | Connection: close\nEND\nACCEPT\n") + kClip + "PAUSE\nTEARDOWN")
            .URL());
    ExpectRefused();
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Element().Set(GST_STATE_PAUSED));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_PLAYING));
}

TEST_F(SourceStartTest, DoesNotPrerollAndSucceedsPlainlyOtherwise) {
    SetLocation(Serve(std::string(kClip) + R"(
        > PAUSE clip 4 | Session: 5
        < 200 4
        TEARDOWN
    )")
                    .URL());
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_READY));
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Element().Set(GST_STATE_PAUSED));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_PLAYING));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_PAUSED));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_READY));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_NULL));
}

std::string CapsOf(GstElement* aElement, const char* aPad) {
    GstPad* const lPad = gst_element_get_static_pad(aElement, aPad);
    if (nullptr == lPad) { return "no pad"; }
    GstCaps* const lCaps = PadCaps(lPad);
    gst_object_unref(lPad);
    if (nullptr == lCaps) { return "no caps"; }
    gchar* const lText = gst_caps_to_string(lCaps);
    gst_caps_unref(lCaps);
    const std::string lResult = lText;
    g_free(lText);
    return lResult;
}

TEST_F(SourceStartTest, AddsAPadPerTrackAndSaysWhenThatIsAll) {
    Start(std::string(kTwoTracks) + "TEARDOWN", GST_STATE_PAUSED);
    EXPECT_THAT(Element().PadSignals(), ElementsAre("src0", "src1", "no-more-pads"));
    EXPECT_THAT(CapsOf(Get(), "src0"), HasSubstr("video/x-h264, encoding-name=(string)H264"));
    EXPECT_THAT(CapsOf(Get(), "src1"), HasSubstr("audio/mpeg, mpegversion=(int)4"));
    To(GST_STATE_NULL);
    EXPECT_THAT(Element().PadSignals(), ElementsAre("src0", "src1", "no-more-pads", "-src1", "-src0"));
}

TEST_F(SourceStartTest, ATrackThatNoStreamPlaysLeavesTheOthers) {
    const DebugCapture lLog("virertsp_source");
    Start(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video audio range=0-20
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | UDP 0
        > SETUP clip/audio 3 | Session: 5 | UDP 1
        < 200 3 | UDP 1
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=90000,url=r/audio;seq=1;rtptime=44100 | Range: npt=0-20
        VIDEO 1 0.0 0.5
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PLAYING);
    EXPECT_THAT(Element().PadSignals(), ElementsAre("src0", "no-more-pads"));
    EXPECT_TRUE(Element().Sink(0)->Await("buffer"));
    EXPECT_LE(1U, lLog.Count(GST_LEVEL_DEBUG, "Could not find stream"));
    const std::vector<std::string> lAll = lLog.All();
    EXPECT_LE(1, std::count_if(lAll.begin(), lAll.end(),
                               [](const std::string& aLine) { return 0 == aLine.compare(0, 5, "ERROR"); }));
}

TEST_F(SourceStartTest, FailsWhenNoTrackHasAStream) {
    SetLocation(Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ audio range=0-20
        > SETUP clip/audio 2
        < 200 2 | Session: 5
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/audio
        TEARDOWN
    )")
                    .URL());
    ExpectRefused();
    EXPECT_THAT(Element().PadSignals(), IsEmpty());
    ExpectTold("has no track that can be played");
}

TEST_F(SourceStartTest, TellsTheDurationAndAnswersQueries) {
    const DebugCapture lLog("virertsp_source");
    Start(std::string(kClip) + "TEARDOWN", GST_STATE_PAUSED);
    EXPECT_EQ(1U, Element().CountMessages("duration"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG,
                             "StreamStartTime: 0, StreamEndTime: 20000000000, StreamDuration: "
                             "20000000000"));
    GstPad* const lPad = gst_element_get_static_pad(Get(), "src0");
    gint64 lDuration = 0;
    EXPECT_TRUE(QueryDuration(lPad, lDuration));
    EXPECT_EQ(20000000000, lDuration);
    GstQuery* const lLatency = gst_query_new_latency();
    EXPECT_TRUE(gst_pad_query(lPad, lLatency));
    gboolean lLive = FALSE;
    GstClockTime lLeast = 0;
    gst_query_parse_latency(lLatency, &lLive, &lLeast, nullptr);
    EXPECT_TRUE(lLive);
    EXPECT_GE(lLeast, 100 * GST_MSECOND);
    gst_query_unref(lLatency);
    gst_object_unref(lPad);
}

TEST_F(SourceStartTest, ALiveStreamHasNoDuration) {
    const DebugCapture lLog("virertsp_source");
    Start(std::string(kLive) + "TEARDOWN", GST_STATE_PAUSED);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "StreamStartTime: 0, StreamEndTime: -1, StreamDuration: -1"));
    EXPECT_EQ(1U, Element().CountMessages("duration"));
    GstPad* const lPad = gst_element_get_static_pad(Get(), "src0");
    gint64 lDuration = 0;
    EXPECT_TRUE(QueryDuration(lPad, lDuration));
    EXPECT_EQ(-1, lDuration);
    gst_object_unref(lPad);
}

TEST_F(SourceStartTest, WaitsForTheFirstPacket) {
    SetLocation(Serve(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video range=0-20
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | UDP 0
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-20
        NOTIFY playing
        AWAIT media
        VIDEO 1 0.0 0.5
        TEARDOWN
    )")
                    .URL());
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, Element().Set(GST_STATE_READY));
    std::atomic<bool> lPaused{false};
    std::thread lApplication([this, &lPaused] {
        Element().Set(GST_STATE_PAUSED);
        lPaused = true;
    });
    EXPECT_TRUE(mServers.back()->Await("playing"));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_FALSE(lPaused);
    mServers.back()->Notify("media");
    lApplication.join();
}

TEST_F(SourceStartTest, APresentationThatEndsBeforeItsFirstPacketIsNotWaitedFor) {
    Start(R"(
        > DESCRIBE clip 1
        < 200 1 | SDP clip/ video range=0-20
        > SETUP clip/video 2 | UDP 0
        < 200 2 | Session: 5 | UDP 0
        > PLAY clip 3
        < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-20
        VIDEO 1 20.0 21.0
        PAUSE
        TEARDOWN
    )",
          GST_STATE_PLAYING);
    EXPECT_TRUE(Element().Sink(0)->Await("eos"));
}

TEST_F(SourceStartTest, TheSettingsReachTheServer) {
    g_object_set(Get(), "network-type", "3G", nullptr);
    Element().SetText("location", Serve(R"(
        C: DESCRIBE {*} RTSP/1.0
        C: CSeq: 1
        C: User-Agent: {*}
        C: Supported: {*}
        C: Accept: application/sdp
        C: X-Network-Type: 3G
        C...
        < 404 1
    )")
                                      .URL()
                                      .c_str());
    ExpectRefused();
}

}  // namespace
}  // namespace ElementTest
