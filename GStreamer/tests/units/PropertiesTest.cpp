#include <gtest/gtest.h>

#include "support/ElementUnderTest.hpp"
#include "support/LogCapture.hpp"

namespace ElementTest {

namespace {

struct Property {
    guint mId;
    const char* mName;  ///< As the element spells it.
    const char* mNick;
    const char* mBlurb;
    bool mWritable;
};

// clang-format off
constexpr Property kTexts[] = {
    {1, "location", "RTSP location", "Location of the RTSP url to read", true},
    {2, "use proxy", "RTSP proxy", "Ip address and port of the proxy. (address:port)", true},
    {3, "proxy authorization", "Proxy-Authorization header",
     "Send provided value in Proxy-Authorization header in DESCRIBE request (empty = disabled)", true},
    {4, "network type", "X-Network-Type header",
     "Send provided value in X-Network-Type header in all RTSP requests (empty = disabled)", true},
    {5, "referrer", "Referrer header",
     "Send provided value in Referrer header in all RTSP requests (empty = disabled)", true},
    {6, "wap profile", "X-WAP-Profile header",
     "Send provided value in X-WAP-Profile header in all RTSP requests (empty = disabled)", true},
    {7, "use local ip", "Local IP", "The local ip address to be used (empty = disabled)", true},
    {8, "use udp ports from", "UDP Port Range Min",
     "Used to set the min port value for the UDP port. \n                              If odd number are set, the "
     "nearest lower even number will be used (min < max, empty = 49192).", true},
    {9, "use udp ports to", "UDP Port Range Max",
     "Used to set the max port value for the UDP port. \n                              If odd number are set, the "
     "nearest higher even number will be used (max <= 65536, empty = 65536).", true},
    {10, "rtp buffer size", "RTP Buffer in seconds", "Buffer time in seconds for non Strand-servers (empty = 3).", true},
    {11, "timeout rtsp after", "Timeout for RTSP", "Time in seconds before timing out RTSP connection (empty = 10s)",
     true},
    {12, "timeout rtp after", "Timeout for RTP/RTCP",
     "Time in seconds before timing out RTP/RTCP during streaming (empty = 20s)", true},
    {14, "version", "Element version", "The release version and build number of the element", false},
};
// clang-format on

std::string Canonical(std::string aName) {
    for (char& lCh : aName) {
        if (' ' == lCh) { lCh = '-'; }
    }
    return aName;
}

GParamSpec* Find(const ElementUnderTest& aElement, const std::string& aName) {
    return g_object_class_find_property(G_OBJECT_GET_CLASS(aElement.Get()), aName.c_str());
}

}  // namespace

TEST(Properties, HaveTheirIdsNamesTextsTypesDefaultsAndFlags) {
    const ElementUnderTest lElement;
    for (const Property& lProperty : kTexts) {
        SCOPED_TRACE(lProperty.mName);
        GParamSpec* const lSpec = Find(lElement, Canonical(lProperty.mName));
        ASSERT_NE(nullptr, lSpec);
        EXPECT_EQ(lProperty.mId, lSpec->param_id);
        EXPECT_STREQ(lProperty.mNick, g_param_spec_get_nick(lSpec));
        EXPECT_STREQ(lProperty.mBlurb, g_param_spec_get_blurb(lSpec));
        ASSERT_TRUE(G_IS_PARAM_SPEC_STRING(lSpec));
        EXPECT_EQ(nullptr, G_PARAM_SPEC_STRING(lSpec)->default_value);
        EXPECT_EQ(lProperty.mWritable ? G_PARAM_READWRITE : G_PARAM_READABLE, lSpec->flags);
    }
}

TEST(Properties, TheNetworkSwitchIsABooleanThatIsOn) {
    const ElementUnderTest lElement;
    GParamSpec* const lSpec = Find(lElement, "network-available");
    ASSERT_NE(nullptr, lSpec);
    EXPECT_EQ(13U, lSpec->param_id);
    EXPECT_STREQ("Network available", g_param_spec_get_nick(lSpec));
    EXPECT_STREQ(
        "The element will only communicate with the streaming server if the network is available (=true)\n"
        " \t\t\t\t      \tWhen network is unavailable, only transitions to lower states are allowed",
        g_param_spec_get_blurb(lSpec));
    ASSERT_TRUE(G_IS_PARAM_SPEC_BOOLEAN(lSpec));
    EXPECT_TRUE(G_PARAM_SPEC_BOOLEAN(lSpec)->default_value);
    EXPECT_EQ(G_PARAM_READWRITE, lSpec->flags);
}

TEST(Properties, AreThoseAndNoOthers) {
    const ElementUnderTest lElement;
    guint lCount = 0;
    GParamSpec** const lSpecs = g_object_class_list_properties(G_OBJECT_GET_CLASS(lElement.Get()), &lCount);
    guint lOwn = 0;
    for (guint lIdx = 0; lIdx < lCount; ++lIdx) {
        lOwn += G_OBJECT_TYPE(lElement.Get()) == lSpecs[lIdx]->owner_type;
    }
    g_free(lSpecs);
    // The fourteen that there always were, and those of `Options`.
    EXPECT_EQ(14U + 7U, lOwn);
}

TEST(Properties, AreUnsetAtFirstAndReadAsSet) {
    ElementUnderTest lElement;
    for (const Property& lProperty : kTexts) {
        if (!lProperty.mWritable || 6 == lProperty.mId) { continue; }
        SCOPED_TRACE(lProperty.mName);
        const std::string lName = Canonical(lProperty.mName);
        EXPECT_EQ("(null)", lElement.Text(lName.c_str()));
        lElement.SetText(lName.c_str(), "rtsp://a/1");
        EXPECT_EQ("rtsp://a/1", lElement.Text(lName.c_str()));
    }
}

TEST(Properties, TheProfileIsReadAsSet) {
    ElementUnderTest lElement;
    EXPECT_EQ("(null)", lElement.Text("wap-profile"));
    lElement.SetProfile("http://maker/profile.xml");
    EXPECT_EQ("http://maker/profile.xml", lElement.Text("wap-profile"));
}

TEST(Properties, KeepTextAsGiven) {
    ElementUnderTest lElement;
    lElement.SetText("use-udp-ports-from", "  5001 or so ");
    EXPECT_EQ("  5001 or so ", lElement.Text("use-udp-ports-from"));
    lElement.SetText("use-udp-ports-from", "");
    EXPECT_EQ("", lElement.Text("use-udp-ports-from"));
    lElement.SetText("use-udp-ports-from", nullptr);
    EXPECT_EQ("(null)", lElement.Text("use-udp-ports-from"));
}

TEST(Properties, TheNetworkSwitchReadsWhatWasSet) {
    ElementUnderTest lElement;
    gboolean lAvailable = FALSE;
    g_object_get(lElement.Get(), "network-available", &lAvailable, nullptr);
    EXPECT_TRUE(lAvailable);
    lElement.SetNetwork(false);
    g_object_get(lElement.Get(), "network-available", &lAvailable, nullptr);
    EXPECT_FALSE(lAvailable);
}

TEST(Properties, VersionIsReleaseAndBuild) {
    const ElementUnderTest lElement;
    EXPECT_EQ("1.6.0.6415", lElement.Text("version"));
}

TEST(Properties, VersionCannotBeWritten) {
    ElementUnderTest lElement;
    const LogCapture lLog("GLib-GObject");
    lElement.SetText("version", "2");
    EXPECT_EQ(1U, lLog.Count("not writable"));
    EXPECT_EQ("1.6.0.6415", lElement.Text("version"));
}

TEST(Properties, UnknownIdsGetTheStandardWarning) {
    const ElementUnderTest lElement;
    GObjectClass* const lClass = G_OBJECT_GET_CLASS(lElement.Get());
    GParamSpec* const lSpec = Find(lElement, "version");
    GValue lValue = G_VALUE_INIT;
    g_value_init(&lValue, G_TYPE_STRING);
    const LogCapture lLog(nullptr);
    for (const guint lId : {0U, 14U, 15U}) {
        lClass->set_property(G_OBJECT(lElement.Get()), lId, &lValue, lSpec);
    }
    for (const guint lId : {0U, 15U}) {
        lClass->get_property(G_OBJECT(lElement.Get()), lId, &lValue, lSpec);
    }
    EXPECT_EQ(2U, lLog.Count("invalid property id 0 for \"version\""));
    EXPECT_EQ(1U, lLog.Count("invalid property id 14 for \"version\""));
    EXPECT_EQ(2U, lLog.Count("invalid property id 15 for \"version\""));
    g_value_unset(&lValue);
}

TEST(Properties, LocationBecomesRtspWhateverItsScheme) {
    const struct {
        const char* mSet;
        const char* mGot;
    } lCases[] = {
        {"vire://server/stream", "rtsp://server/stream"},
        {"abc://a/b", "rtsp://a/b"},
        {"rtsp://x", "rtsp://x"},
        {"rtsp://", "rtsp://"},
        {"RTSP://x", "rtsp://x"},
        {"://x", "rtsp://x"},
        {"vire://", "rtsp://"},
        {"vire://a://b", "rtsp://a://b"},
        {" rtsp://x", "rtsp://x"},
        {"server/stream", "(null)"},
        {"rtsp:/x", "(null)"},
        {"", "(null)"},
        {nullptr, "(null)"},
    };
    for (const auto& lCase : lCases) {
        SCOPED_TRACE(nullptr == lCase.mSet ? "null" : lCase.mSet);
        ElementUnderTest lElement;
        lElement.SetText("location", "rtsp://before");
        lElement.SetText("location", lCase.mSet);
        EXPECT_EQ(lCase.mGot, lElement.Text("location"));
    }
}

}  // namespace ElementTest
