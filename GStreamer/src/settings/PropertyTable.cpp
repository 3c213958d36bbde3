#include "settings/PropertyTable.hpp"

#include <string>

namespace nsGstVireRtspSrc {

namespace {

struct StringProperty {
    guint mId;
    const char* mName;
    const char* mNick;
    const char* mBlurb;
    GParamFlags mFlags;
};

// In the order of installation; the network switch, a boolean, follows. The wording and the white space are
// those that applications have always been shown.
constexpr StringProperty kProperties[] = {
    {1, "location", "RTSP location", "Location of the RTSP url to read", G_PARAM_READWRITE},
    {2, "use proxy", "RTSP proxy", "Ip address and port of the proxy. (address:port)", G_PARAM_READWRITE},
    {3, "proxy authorization", "Proxy-Authorization header",
     "Send provided value in Proxy-Authorization header in DESCRIBE request (empty = disabled)", G_PARAM_READWRITE},
    {4, "network type", "X-Network-Type header",
     "Send provided value in X-Network-Type header in all RTSP requests (empty = disabled)", G_PARAM_READWRITE},
    {5, "referrer", "Referrer header", "Send provided value in Referrer header in all RTSP requests (empty = disabled)",
     G_PARAM_READWRITE},
    {6, "wap profile", "X-WAP-Profile header",
     "Send provided value in X-WAP-Profile header in all RTSP requests (empty = disabled)", G_PARAM_READWRITE},
    {kPropertyVersion, "version", "Element version", "The release version and build number of the element",
     G_PARAM_READABLE},
    {7, "use local ip", "Local IP", "The local ip address to be used (empty = disabled)", G_PARAM_READWRITE},
    {8, "use udp ports from", "UDP Port Range Min",
     "Used to set the min port value for the UDP port. \n"
     "                              "
     "If odd number are set, the nearest lower even number will be used (min < max, empty = 49192).",
     G_PARAM_READWRITE},
    {9, "use udp ports to", "UDP Port Range Max",
     "Used to set the max port value for the UDP port. \n"
     "                              "
     "If odd number are set, the nearest higher even number will be used (max <= 65536, empty = 65536).",
     G_PARAM_READWRITE},
    {10, "rtp buffer size", "RTP Buffer in seconds", "Buffer time in seconds for non Strand-servers (empty = 3).",
     G_PARAM_READWRITE},
    {11, "timeout rtsp after", "Timeout for RTSP", "Time in seconds before timing out RTSP connection (empty = 10s)",
     G_PARAM_READWRITE},
    {12, "timeout rtp after", "Timeout for RTP/RTCP",
     "Time in seconds before timing out RTP/RTCP during streaming (empty = 20s)", G_PARAM_READWRITE},
};

constexpr const char* kNetworkAvailableBlurb =
    "The element will only communicate with the streaming server if the network is available (=true)\n"
    " \t\t\t\t      \t"
    "When network is unavailable, only transitions to lower states are allowed";

/// The form under which GLib keeps a name: it used to turn blanks into dashes itself and since 2.66 refuses
/// them.
std::string Canonical(const char* aName) {
    std::string lName(aName);
    for (char& lCh : lName) {
        if (' ' == lCh) { lCh = '-'; }
    }
    return lName;
}

}  // namespace

void InstallProperties(GObjectClass* aClass) {
    for (const StringProperty& lProperty : kProperties) {
        g_object_class_install_property(aClass, lProperty.mId,
                                        g_param_spec_string(Canonical(lProperty.mName).c_str(), lProperty.mNick,
                                                            lProperty.mBlurb, nullptr, lProperty.mFlags));
    }
    g_object_class_install_property(aClass, kPropertyNetworkAvailable,
                                    g_param_spec_boolean(Canonical("network available").c_str(), "Network available",
                                                         kNetworkAvailableBlurb, TRUE, G_PARAM_READWRITE));
}

}  // namespace nsGstVireRtspSrc
