#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "settings/Profile.hpp"
#include "support/DebugCapture.hpp"
#include "support/ElementUnderTest.hpp"
#include "support/FakeServer.hpp"

namespace ElementTest {

namespace {

constexpr gint kModern = 1;
constexpr guint kUdp = 1;
constexpr guint kTcp = 2;

GParamSpec* Find(const ElementUnderTest& aElement, const char* aName) {
    return g_object_class_find_property(G_OBJECT_GET_CLASS(aElement.Get()), aName);
}

void MakeModern(ElementUnderTest& aElement) {
    gst_util_set_object_arg(G_OBJECT(aElement.Get()), "profile", "modern");
}

FakeServer::Description Generic(const char* aFormat) {
    return {{"MediaType", "audio"},
            {"Format", aFormat},
            {"TimeRes", "44100"},
            {"EncParams", "2"},
            {"FmtParams", "streamtype=5; mode=AAC-hbr; config=1210"}};
}

/// What the library is told of the options.
std::vector<std::string> Told(const FakeServer& aServer) {
    std::vector<std::string> lTold;
    for (const char* const lKey : {"RTSP:Profile", "RTSP:UserName", "RTSP:Password", "RTSP:Transports",
                                   "RTSP:UDPBuffer", "RTSP:TLSAuthorities"}) {
        lTold.push_back(aServer.Setting(lKey));
    }
    return lTold;
}

class ProfileTest : public ::testing::Test {
protected:
    /// As soon as it is PAUSED.
    bool Start() {
        mServer.Push(0, 0, "x");
        mElement.SetText("location", "rtsp://host/clip");
        return GST_STATE_CHANGE_NO_PREROLL == mElement.Set(GST_STATE_PAUSED);
    }
    std::string CapsOf(const char* aPad) {
        GstPad* const lPad = gst_element_get_static_pad(mElement.Get(), aPad);
        if (nullptr == lPad) { return "(no pad)"; }
        GstCaps* const lCaps = PadCaps(lPad);
        gchar* const lText = gst_caps_to_string(lCaps);
        const std::string lResult = lText;
        g_free(lText);
        gst_caps_unref(lCaps);
        gst_object_unref(lPad);
        return lResult;
    }

    FakeServer mServer;
    ElementUnderTest mElement;
};

}  // namespace

TEST(Profile, OnlyModernSendsPacketsAsTheyCome) {
    using nsGstVireRtspSrc::Profile;
    EXPECT_FALSE(Profile::Named(Profile::kClassic).waits_for_media());
    EXPECT_TRUE(Profile::Named(Profile::kModern).waits_for_media());
}

TEST_F(ProfileTest, TheOptionsAreBehindTheOldPropertiesAndAtTheirDefaults) {
    guint lId = 101;
    for (const char* const lName :
         {"profile", "user-id", "user-pw", "transports", "udp-buffer-size", "stats", "tls-authorities"}) {
        GParamSpec* const lSpec = Find(mElement, lName);
        ASSERT_NE(nullptr, lSpec) << lName;
        EXPECT_EQ(lId++, lSpec->param_id);
        EXPECT_EQ(std::string("stats") == lName ? G_PARAM_READABLE : G_PARAM_READWRITE, lSpec->flags) << lName;
    }
    gint lProfile = -1;
    guint lTransports = 9;
    guint lSize = 9;
    g_object_get(mElement.Get(), "profile", &lProfile, "transports", &lTransports, "udp-buffer-size", &lSize, nullptr);
    EXPECT_EQ(0, lProfile);
    EXPECT_EQ(0U, lTransports);
    EXPECT_EQ(0U, lSize);
    EXPECT_EQ("(null)", mElement.Text("user-id"));
    EXPECT_EQ("(null)", mElement.Text("user-pw"));
    EXPECT_EQ("(null)", mElement.Text("tls-authorities"));
}

TEST_F(ProfileTest, LeftAloneTheOptionsAreNotForwarded) {
    mServer.Describe({FakeServer::H264()});
    ASSERT_TRUE(Start());
    EXPECT_EQ(std::vector<std::string>(6, "(none)"), Told(mServer));
}

TEST_F(ProfileTest, ASecuredLocationIsPlayedAsOneInModern) {
    for (const gint lProfile : {kModern, 0}) {
        mServer.Describe({FakeServer::H264()});
        mServer.TakeCalls();
        g_object_set(mElement.Get(), "profile", lProfile, nullptr);
        mServer.Push(0, 0, "x");
        mElement.SetText("location", "RTSPS://host/clip");
        EXPECT_EQ("rtsp://host/clip", mElement.Text("location"));
        mElement.Set(GST_STATE_PAUSED);
        const std::vector<std::string> lCalls = mServer.TakeCalls();
        const std::string lPlayed = std::string(kModern == lProfile ? "rtsps" : "rtsp") + "://host/clip";
        EXPECT_EQ(1, std::count(lCalls.begin(), lCalls.end(), "Play " + lPlayed + " 0.000000")) << lPlayed;
        mElement.Set(GST_STATE_NULL);
    }
}

TEST_F(ProfileTest, AFailureNamesTheSchemeThatWasPlayed) {
    mServer.Describe({FakeServer::H264()});
    mServer.On("Play", Throws<Player::RTSPErr>(0x404));
    const std::string lReason = "://host/clip failed: the server has no such presentation (404); check the path.";
    mElement.SetText("location", "rtsps://host/clip");
    EXPECT_EQ(GST_STATE_CHANGE_FAILURE, mElement.Set(GST_STATE_PAUSED));
    EXPECT_EQ("warning Playing rtsp" + lReason, mElement.TakeMessages({"warning"}).at(0));
    MakeModern(mElement);
    EXPECT_EQ(GST_STATE_CHANGE_FAILURE, mElement.Set(GST_STATE_PAUSED));
    EXPECT_EQ("failure resource 3 Playing rtsps" + lReason, mElement.TakeMessages({"failure"}).at(0));
}

TEST_F(ProfileTest, AnotherSchemeThatIsTakenForRtspIsInTheLog) {
    mServer.Describe({FakeServer::H264()});
    for (const auto& [lLocation, lCount] : std::map<std::string, std::size_t>{
             {"http://host/clip", 1}, {"HTTP://host/clip", 1}, {"vire://host/clip", 0}, {"rtsp://host/clip", 0}}) {
        mServer.Push(0, 0, "x");
        const DebugCapture lLog("virertsp_source");
        mElement.SetText("location", lLocation.c_str());
        mElement.Set(GST_STATE_PAUSED);
        EXPECT_EQ(lCount, lLog.Count(GST_LEVEL_WARNING, "The location's scheme is taken for rtsp, though it is http"))
            << lLocation;
        mElement.Set(GST_STATE_NULL);
    }
}

TEST_F(ProfileTest, TheOptionsReadAsSetAndReachTheLibrary) {
    mServer.Describe({FakeServer::H264()});
    g_object_set(mElement.Get(), "profile", kModern, "user-id", "anna", "user-pw", "p:w", "transports", kUdp | kTcp,
                 "udp-buffer-size", 1000000U, "tls-authorities", "/ca.pem", nullptr);
    ASSERT_TRUE(Start());
    EXPECT_EQ((std::vector<std::string>{"modern", "anna", "p:w", "udp,tcp", "1000000", "/ca.pem"}), Told(mServer));
    gint lProfile = -1;
    guint lTransports = 9;
    guint lSize = 9;
    g_object_get(mElement.Get(), "profile", &lProfile, "transports", &lTransports, "udp-buffer-size", &lSize, nullptr);
    EXPECT_EQ(kModern, lProfile);
    EXPECT_EQ(kUdp | kTcp, lTransports);
    EXPECT_EQ(1000000U, lSize);
    EXPECT_EQ("anna", mElement.Text("user-id"));

    g_object_set(mElement.Get(), "profile", 0, "user-id", nullptr, "transports", kTcp, "udp-buffer-size", 0U, nullptr);
    EXPECT_EQ((std::vector<std::string>{"classic", "", "p:w", "tcp", "", "/ca.pem"}), Told(mServer));
    g_object_set(mElement.Get(), "transports", kUdp, nullptr);
    EXPECT_EQ("udp", mServer.Setting("RTSP:Transports"));
    EXPECT_EQ("(null)", mElement.Text("user-id"));
}

TEST_F(ProfileTest, NewerFormatsHaveNoPadInClassic) {
    mServer.Describe({FakeServer::H264(), Generic("mpeg4-generic"), {{"MediaType", "audio"}, {"Format", "AMR"}}});
    ASSERT_TRUE(Start());
    EXPECT_EQ("(no pad)", CapsOf("src1"));
    EXPECT_EQ("(no pad)", CapsOf("src2"));
}

TEST_F(ProfileTest, NewerFormatsHavePadsInModern) {
    MakeModern(mElement);
    mServer.Describe({FakeServer::H264(),
                      Generic("MPEG4-GENERIC"),
                      {{"MediaType", "audio"}, {"Format", "AMR"}, {"TimeRes", "8000"}},
                      {{"MediaType", "video"}, {"Format", "mpeg4-generic"}}});
    ASSERT_TRUE(Start());
    EXPECT_EQ(
        "audio/mpeg, mpegversion=(int)4, stream-format=(string)raw, framed=(boolean)true, channels=(int)2, "
        "rate=(int)44100, codec_data=(buffer)1210",
        CapsOf("src1"));
    EXPECT_EQ("audio/AMR, rate=(int)8000, channels=(int)1", CapsOf("src2"));
    EXPECT_EQ("(no pad)", CapsOf("src3")) << "not audio";
}

TEST_F(ProfileTest, SpeechFramesHaveTheByteThatTellsTheirType) {
    MakeModern(mElement);
    mServer.Describe({{{"MediaType", "audio"}, {"Format", "amr"}, {"TimeRes", "8000"}}});
    const struct {
        std::size_t mSize;
        std::string mHeader;
    } lFrames[] = {{12, "\x04"}, {31, "\x3c"}, {5, "\x44"}, {7, ""}};
    for (const auto& lFrame : lFrames) {
        mServer.Push(0, 0, std::string(lFrame.mSize, 'a'));
    }
    ASSERT_TRUE(Start());
    mElement.Set(GST_STATE_PLAYING);
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer", 4));
    const std::vector<Item> lBuffers = mElement.Sink(0)->Buffers();
    for (std::size_t lIdx = 0; lIdx < 4; ++lIdx) {
        EXPECT_EQ(lFrames[lIdx].mHeader + std::string(lFrames[lIdx].mSize, 'a'), lBuffers[lIdx].mBytes);
    }
}

TEST_F(ProfileTest, FramesOfOnePacketFollowOneAnother) {
    const struct {
        FakeServer::Description mTrack;
        GstClockTime mDuration;
    } lTracks[] = {
        {{{"MediaType", "audio"}, {"Format", "AMR"}, {"TimeRes", "8000"}}, 20 * GST_MSECOND},
        {Generic("mpeg4-generic"), 1024 * GST_SECOND / 44100},
        // The coder's 24000 Hz (number 6): spectral band replication makes 48000 of it.
        {{{"MediaType", "audio"}, {"Format", "mpeg4-generic"}, {"TimeRes", "48000"}, {"FmtParams", "config=1310"}},
         1024 * GST_SECOND / 24000},
        {{{"MediaType", "audio"}, {"Format", "mpeg4-generic"}, {"TimeRes", "16000"}}, 1024 * GST_SECOND / 16000}};
    MakeModern(mElement);
    for (const auto& lTrack : lTracks) {
        mServer.Describe({lTrack.mTrack});
        mServer.Push(0, 0, std::string(12, 'a'));
        for (const long long lTime : {0LL, 0LL, 5000000000LL, 5000000000LL, 6000000000LL}) {
            mServer.Push(0, lTime, std::string(12, 'a'));
        }
        mElement.SetText("location", "rtsp://host/clip");
        mElement.Set(GST_STATE_PLAYING);
        ASSERT_TRUE(mElement.Sink(0)->Await("buffer", 6));
        std::vector<GstClockTime> lTimes;
        for (const Item& lBuffer : mElement.Sink(0)->Buffers()) {
            lTimes.push_back(lBuffer.mTimestamp);
        }
        EXPECT_EQ((std::vector<GstClockTime>{0, lTrack.mDuration, 2 * lTrack.mDuration, 5 * GST_SECOND,
                                             5 * GST_SECOND + lTrack.mDuration, 6 * GST_SECOND}),
                  lTimes);
        mElement.Set(GST_STATE_NULL);
    }
}

TEST_F(ProfileTest, FailuresAreErrorsInModernOnly) {
    mServer.Describe({FakeServer::H264()});
    const DebugCapture lLog("virertsp_source");
    mServer.On("Play", Throws<Player::RTSPErr>(0x404));
    const std::string lSentence =
        "Playing rtsp://host/clip failed: the server has no such presentation (404); check the path.";
    EXPECT_FALSE(Start());
    EXPECT_EQ((std::vector<std::string>{"error 1115140", "warning " + lSentence}),
              mElement.TakeMessages({"error", "warning", "failure"}));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_ERROR, lSentence)) << "launchers show the log when a start fails";
    MakeModern(mElement);
    EXPECT_FALSE(Start());
    EXPECT_EQ((std::vector<std::string>{"error 1115140", "failure resource 3 " + lSentence}),
              mElement.TakeMessages({"error", "warning", "failure"}));
    mServer.On("Play", Throws<Player::RTSPErr>(Player::ErrorCode::kMulticastOnly));
    EXPECT_FALSE(Start());
    EXPECT_EQ(
        "failure resource 1 Playing rtsp://host/clip failed: the server offers multicast only, which is not supported.",
        mElement.TakeMessages({"failure"}).at(0));
    mServer.On("Play", Throws<Player::NetworkErr>(5));
    EXPECT_FALSE(Start());
    EXPECT_EQ("failure resource 5", mElement.TakeMessages({"failure"}).at(0).substr(0, 18));
}

TEST_F(ProfileTest, AServerThatWantsAPasswordIsAnErrorOfItsOwnWhereThereIsOne) {
    MakeModern(mElement);
    mServer.On("Play", Throws<Player::RTSPErr>(0x401));
    EXPECT_FALSE(Start());
    EXPECT_EQ(0U, mElement.TakeMessages({"failure"}).at(0).find("failure resource " + std::string(kNotAuthorized)));
}

TEST_F(ProfileTest, WhatLeavesThePlayingAsItIsIsAWarningInModern) {
    MakeModern(mElement);
    mServer.Describe({FakeServer::H264()});
    ASSERT_TRUE(Start());
    mElement.Set(GST_STATE_PLAYING);
    mServer.On("Pause", Throws<Player::RTSPErr>(0x455));
    mElement.TakeMessages();
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_EQ("warning Pausing", mElement.TakeMessages({"failure", "warning"}).at(0).substr(0, 15));
}

TEST_F(ProfileTest, AStartThatIsRefusedIsToldOnTheBusInModernOnly) {
    EXPECT_EQ(GST_STATE_CHANGE_FAILURE, mElement.Set(GST_STATE_PAUSED));
    EXPECT_TRUE(mElement.TakeMessages({"failure", "warning"}).empty());
    MakeModern(mElement);
    EXPECT_EQ(GST_STATE_CHANGE_FAILURE, mElement.Set(GST_STATE_PAUSED));
    EXPECT_EQ(std::vector<std::string>{"failure resource 3 No location."}, mElement.TakeMessages({"failure"}));
}

namespace {

/// "src0 packets" ...
guint64 Figure(GstElement* aElement, const char* aTrack, const char* aFigure) {
    GstStructure* lStats = nullptr;
    g_object_get(aElement, "stats", &lStats, nullptr);
    const GValue* const lTrack = nullptr == lStats ? nullptr : gst_structure_get_value(lStats, aTrack);
    guint64 lFigure = G_MAXUINT64;
    if (nullptr != lTrack) {
        const GValue* const lValue = gst_structure_get_value(gst_value_get_structure(lTrack), aFigure);
        GValue lWide{};
        g_value_init(&lWide, G_TYPE_UINT64);
        if (nullptr != lValue && g_value_transform(lValue, &lWide)) { lFigure = g_value_get_uint64(&lWide); }
        g_value_unset(&lWide);
    }
    if (nullptr != lStats) { gst_structure_free(lStats); }
    return lFigure;
}

}  // namespace

TEST_F(ProfileTest, StatsHaveAStructurePerTrack) {
    EXPECT_EQ(G_MAXUINT64, Figure(mElement.Get(), "src0", "packets")) << "no tracks yet";
    Player::Reception lReception;
    lReception.mPacketsReceived = 40;
    lReception.mPacketsLost = 3;
    lReception.mPacketsReordered = 6;
    lReception.mPacketsLate = 2;
    lReception.mPacketsDuplicate = 1;
    lReception.mBytes = 5000000000;
    lReception.mJitter = Player::Time(1, 4);
    lReception.mBufferedTime = Player::Time(3, 2);
    mServer.Receive(1, lReception);
    mServer.Describe({FakeServer::AAC(), FakeServer::H264(), {{"MediaType", "audio"}, {"Format", "AMR"}}});
    mServer.Push(1, 0, "a");
    mServer.Push(1, 1, "b");
    ASSERT_TRUE(Start());
    mElement.Set(GST_STATE_PLAYING);
    ASSERT_TRUE(mElement.Sink(1)->Await("buffer", 2));
    const struct {
        const char* mName;
        guint64 mValue;
    } lFigures[] = {{"packets", 40},       {"lost", 3},
                    {"late", 2},           {"reordered", 6},
                    {"duplicate", 1},      {"bytes", 5000000000},
                    {"jitter", 250000000}, {"buffered-time", 1500000000},
                    {"access-units", 2},   {"round-trip", 125000000}};
    EXPECT_EQ(G_MAXUINT64, Figure(mElement.Get(), "src1", "round-trip")) << "is unknown";
    mServer.SetRoundTrip(125);
    // While a streaming thread holds the player, the figures are those of the time before.
    for (const auto& lFigure : lFigures) {
        EXPECT_TRUE(Eventually([&] { return lFigure.mValue == Figure(mElement.Get(), "src1", lFigure.mName); }))
            << lFigure.mName << ": " << Figure(mElement.Get(), "src1", lFigure.mName);
    }
    EXPECT_EQ(0U, Figure(mElement.Get(), "src2", "access-units")) << "has no pad";
    EXPECT_EQ(G_MAXUINT64, Figure(mElement.Get(), "src3", "packets"));
}

TEST_F(ProfileTest, StatsDoNotWaitForTheServer) {
    mServer.Describe({FakeServer::H264()});
    ASSERT_TRUE(Start());
    mElement.Set(GST_STATE_PLAYING);
    ASSERT_TRUE(Eventually([this] { return 0 == Figure(mElement.Get(), "src0", "packets"); }));
    mServer.Block("Pause");
    std::thread lPause([this] { mElement.Set(GST_STATE_PAUSED); });
    ASSERT_TRUE(mServer.AwaitBlocked());
    EXPECT_EQ(0U, Figure(mElement.Get(), "src0", "packets")) << "the last figures";
    mServer.Release();
    lPause.join();
}

}  // namespace ElementTest
