#include <gtest/gtest.h>

#include "streams/StreamFactory.hpp"
#include "support/DebugCapture.hpp"
#include "support/ElementUnderTest.hpp"
#include "support/FakeServer.hpp"

namespace ElementTest {

namespace {

constexpr const char* kSprop = "sprop-parameter-sets=Z0LAFdkBQfsBagwMDUoAAAMAAgAAAwBlHixckA==,aMuMsg==";

/// What the pad of a track with this description shows downstream.
GstCaps* CapsFor(const FakeServer::Description& aDescription) {
    FakeServer lServer;
    lServer.Describe({aDescription});
    lServer.Push(0, 0, "x");
    ElementUnderTest lElement;
    lElement.SetText("location", "rtsp://host/clip");
    if (GST_STATE_CHANGE_NO_PREROLL != lElement.Set(GST_STATE_PAUSED)) { return nullptr; }
    GstPad* const lPad = gst_element_get_static_pad(lElement.Get(), "src0");
    GstCaps* const lCaps = PadCaps(lPad);
    gst_object_unref(lPad);
    return lCaps;
}

/// Both ways: no field is missing, none too many, none different.
void ExpectCaps(const std::string& aExpected, GstCaps* aCaps) {
    ASSERT_NE(nullptr, aCaps);
    GstCaps* const lExpected = gst_caps_from_string((aExpected + LegCaps(aExpected)).c_str());
    gchar* const lGot = gst_caps_to_string(aCaps);
    gchar* const lWanted = gst_caps_to_string(lExpected);
    EXPECT_TRUE(gst_caps_is_equal(lExpected, aCaps)) << lGot << "\n" << lWanted;
    g_free(lWanted);
    g_free(lGot);
    gst_caps_unref(lExpected);
    gst_caps_unref(aCaps);
}

FakeServer::Description With(FakeServer::Description aDescription, const char* aKey, const std::string& aValue) {
    aDescription.emplace_back(aKey, aValue);
    return aDescription;
}

constexpr const char* kH264Caps = "video/x-h264, encoding-name=(string)H264";
constexpr const char* kMP4VCaps =
    "video/mpeg, mpegversion=(int)4, encoding-name=(string)MP4V-ES, systemstream=(boolean)false";
constexpr const char* kAACCaps =
    "audio/mpeg, mpegversion=(int)4, encoding-name=(string)MP4A-LATM, framed=(boolean)false";

}  // namespace

TEST(Caps, H264WithParameterSets) {
    const DebugCapture lLog("virertsp_streamH264");
    ExpectCaps(
        std::string(kH264Caps) +
            ", width=(int)320, height=(int)240, codec_data=(buffer)0142c015ffe1001c6742c015d90141fb016a0c0c0d4a00"
            "0003000200000300651e2c5c9001000468cb8cb2",
        CapsFor(With(FakeServer::H264(), "FmtParams", std::string("packetization-mode=1; ") + kSprop)));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Set Width = 320\n"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "Set Hight = 240\n"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_INFO, "H264 pad-added"));
}

TEST(Caps, H264WithoutParameterSets) {
    ExpectCaps(kH264Caps, CapsFor(FakeServer::H264()));
    ExpectCaps(kH264Caps, CapsFor(With(FakeServer::H264(), "FmtParams", "packetization-mode=1")));
    ExpectCaps(kH264Caps, CapsFor(With(FakeServer::H264(), "FmtParams", "sprop-parameter-set=Z0I=,aMuM")));
}

TEST(Caps, H264WithParameterSetsThatCannotBeRead) {
    ExpectCaps(std::string(kH264Caps) + ", codec_data=(buffer)01000000ffe1000001000468cb8cb2",
               CapsFor(With(FakeServer::H264(), "FmtParams", "sprop-parameter-sets=,aMuMsg==")));
}

TEST(Caps, MP4VWithConfiguration) {
    // A simple profile configuration of 176x144 pixels.
    const std::string lConfig = "000001b001000001b5090000010000000120008440fa282c2090a21f";
    const DebugCapture lLog("virertsp_streamMP4V");
    ExpectCaps(std::string(kMP4VCaps) + ", width=(int)176, height=(int)144, codec_data=(buffer)" + lConfig,
               CapsFor(With(FakeServer::MP4V(), "FmtParams", "profile-level-id=1; config=" + lConfig)));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_INFO, "MPEG4 pad-added"));
}

TEST(Caps, MP4VWithAConfigurationWithoutSizeSaysZero) {
    ExpectCaps(std::string(kMP4VCaps) + ", width=(int)0, height=(int)0, codec_data=(buffer)000001b001",
               CapsFor(With(FakeServer::MP4V(), "FmtParams", "config=000001b001")));
}

TEST(Caps, MP4VWithAnEmptyConfigurationHasOneAllTheSame) {
    GstCaps* const lCaps = CapsFor(With(FakeServer::MP4V(), "FmtParams", "config="));
    const GstStructure* const lFields = gst_caps_get_structure(lCaps, 0);
    gint lWidth = -1;
    EXPECT_TRUE(gst_structure_get_int(lFields, "width", &lWidth));
    EXPECT_EQ(0, lWidth);
    const GValue* const lData = gst_structure_get_value(lFields, "codec_data");
    ASSERT_NE(nullptr, lData);
    EXPECT_EQ(0U, GST_BUFFER_SIZE(gst_value_get_buffer(lData)));
    gst_caps_unref(lCaps);
}

TEST(Caps, MP4VWithoutUsableConfiguration) {
    ExpectCaps(kMP4VCaps, CapsFor(FakeServer::MP4V()));
    ExpectCaps(kMP4VCaps, CapsFor(With(FakeServer::MP4V(), "FmtParams", "profile-level-id=1")));
    ExpectCaps(kMP4VCaps, CapsFor(With(FakeServer::MP4V(), "FmtParams", "config=000001b0 1")));
    ExpectCaps(kMP4VCaps, CapsFor(With(FakeServer::MP4V(), "FmtParams", "config=000001b00")));
    ExpectCaps(kMP4VCaps, CapsFor(With(FakeServer::MP4V(), "FmtParams", "config=xyz1")));
}

TEST(Caps, AACWithAll) {
    const DebugCapture lLog("virertsp_streamAAC");
    ExpectCaps(std::string(kAACCaps) + ", channels=(int)2, rate=(int)44100, codec_data=(buffer)121000",
               CapsFor(With(FakeServer::AAC(), "FmtParams", "cpresent=0;config=40002420;object=2")));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_INFO, "AAC pad-added"));
}

TEST(Caps, AACWithoutChannelsHasNoSuchField) {
    ExpectCaps(std::string(kAACCaps) + ", rate=(int)8000", CapsFor({{"Format", "MP4A-LATM"}, {"TimeRes", "8000"}}));
}

TEST(Caps, AACWithEmptyChannelsHasOne) {
    ExpectCaps(std::string(kAACCaps) + ", channels=(int)1", CapsFor({{"Format", "MP4A-LATM"}, {"EncParams", ""}}));
}

TEST(Caps, AACWithAConfigurationThatIsNoneHasNoCodecData) {
    for (const char* lConfig :
         {"config=40", "config=", "config=80002420", "config=ff", "config=4000242", "conf=4000"}) {
        SCOPED_TRACE(lConfig);
        ExpectCaps(kAACCaps, CapsFor({{"Format", "MP4A-LATM"}, {"FmtParams", lConfig}}));
    }
}

TEST(StreamFactory, RefusesOtherFormatsWithItsText) {
    FakeServer lServer;
    lServer.Describe({{{"Format", "AMR"}}, {{"Format", "h264"}}, {{"Format", ""}}, {{"MediaType", "video"}}});
    nsGstVireRtspSrc::PlayerAccess lPlayer;
    nsGstVireRtspSrc::PlayerAccess::Hold(lPlayer)->Play("rtsp://host", Player::Time(0));
    for (const unsigned lTrack : {0U, 1U, 2U}) {
        try {
            nsGstVireRtspSrc::StreamFactory::CreateStream(nullptr, nullptr, lPlayer, lTrack);
            ADD_FAILURE() << "track " << lTrack << " was not refused";
        } catch (const char* lText) { EXPECT_STREQ("7630: Failed to play: no valid media session", lText); }
    }
    // Without a format there is no stream and no complaint.
    EXPECT_EQ(nullptr, nsGstVireRtspSrc::StreamFactory::CreateStream(nullptr, nullptr, lPlayer, 3));
}

}  // namespace ElementTest
