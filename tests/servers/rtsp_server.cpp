// Serves one presentation with gst-rtsp-server, for tests and demonstrations. Prints its URL as one line on
// standard output once it accepts connections; ends on SIGTERM, SIGINT and when standard input ends.

#include <glib-unix.h>
#include <gst/rtsp-server/rtsp-server.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Sent.hpp"

namespace {

struct Options {
    gchar* mAddress = nullptr;
    gint mPort = 0;
    gchar* mPath = nullptr;
    gchar* mLaunch = nullptr;
    gchar* mFile = nullptr;
    gint mMTU = 1400;
    gchar* mAggregate = nullptr;
    gboolean mTCPOnly = FALSE;
    gboolean mUDPOnly = FALSE;
    gboolean mShared = FALSE;
    gchar* mUser = nullptr;
    gboolean mBasic = FALSE;
    gchar* mCertificate = nullptr;
    gboolean mTwice = FALSE;
    gchar* mSent = nullptr;
};

[[noreturn]] void Fail(const std::string& aText) {
    std::fprintf(stderr, "rtsp_server: %s\n", aText.c_str());
    std::exit(1);
}

void Parse(int aCount, char** aTexts, Options& aOptions) {
    const GOptionEntry lEntries[] = {
        {"address", 'a', 0, G_OPTION_ARG_STRING, &aOptions.mAddress, "Address to listen on (127.0.0.1)", "IP"},
        {"port", 'p', 0, G_OPTION_ARG_INT, &aOptions.mPort, "Port to listen on (0: any free one)", "N"},
        {"path", 0, 0, G_OPTION_ARG_STRING, &aOptions.mPath, "Where the presentation is (/clip)", "/PATH"},
        {"launch", 'l', 0, G_OPTION_ARG_STRING, &aOptions.mLaunch, "Bin that ends in payloaders pay0, pay1 ...", "BIN"},
        {"file", 'f', 0, G_OPTION_ARG_FILENAME, &aOptions.mFile, "H.264 to serve: .mp4, or .h264 in Annex B", "FILE"},
        {"mtu", 0, 0, G_OPTION_ARG_INT, &aOptions.mMTU, "Largest RTP packet of --file (1400)", "BYTES"},
        {"aggregate", 0, 0, G_OPTION_ARG_STRING, &aOptions.mAggregate,
         "Joining of NAL units of --file: none, zero-latency or max-stap (none)", "MODE"},
        {"tcp-only", 0, 0, G_OPTION_ARG_NONE, &aOptions.mTCPOnly, "Refuse RTP over UDP", nullptr},
        {"udp-only", 0, 0, G_OPTION_ARG_NONE, &aOptions.mUDPOnly, "Refuse RTP over the RTSP connection", nullptr},
        {"shared", 0, 0, G_OPTION_ARG_NONE, &aOptions.mShared, "All clients see one and the same play", nullptr},
        {"user", 0, 0, G_OPTION_ARG_STRING, &aOptions.mUser, "Ask for a name and password, by Digest", "NAME:PASSWORD"},
        {"basic", 0, 0, G_OPTION_ARG_NONE, &aOptions.mBasic, "Ask by Basic instead", nullptr},
        {"certificate", 0, 0, G_OPTION_ARG_FILENAME, &aOptions.mCertificate,
         "Speak TLS; a certificate with its key, in PEM", "FILE"},
        {"twice", 0, 0, G_OPTION_ARG_NONE, &aOptions.mTwice, "Serve --file as two tracks", nullptr},
        {"sent", 0, 0, G_OPTION_ARG_FILENAME, &aOptions.mSent,
         "Write down the RTP packets that leave over UDP: type, sequence number, mark", "FILE"},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
    };
    GOptionContext* const lContext = g_option_context_new("- serve one presentation over RTSP");
    g_option_context_add_main_entries(lContext, lEntries, nullptr);
    g_option_context_add_group(lContext, gst_init_get_option_group());
    GError* lError = nullptr;
    if (!g_option_context_parse(lContext, &aCount, &aTexts, &lError)) { Fail(lError->message); }
    g_option_context_free(lContext);
    if ((nullptr == aOptions.mLaunch) == (nullptr == aOptions.mFile)) { Fail("give either --launch or --file"); }
}

/// The NAL units of the file go out as they are: nothing is inserted, joined only when asked to.
std::string LaunchForFile(const Options& aOptions) {
    const std::string lFile = aOptions.mFile;
    const bool lIsMP4 = lFile.size() > 4 && 0 == lFile.compare(lFile.size() - 4, 4, ".mp4");
    gchar* const lQuoted = g_strescape(aOptions.mFile, nullptr);
    const std::string lSource = std::string("( filesrc location=\"") + lQuoted + "\" ! " +
                                (lIsMP4 ? "qtdemux name=demux demux.video_0" : "h264parse config-interval=0");
    g_free(lQuoted);
    const auto lPayloader = [&](const char* aNumber) {
        return std::string(" ! rtph264pay name=pay") + aNumber +
               " pt=96 config-interval=0 mtu=" + std::to_string(aOptions.mMTU) +
               " aggregate-mode=" + (nullptr == aOptions.mAggregate ? "none" : aOptions.mAggregate);
    };
    if (!aOptions.mTwice) { return lSource + lPayloader("0") + " )"; }
    return lSource + " ! tee name=both both. ! queue" + lPayloader("0") + " both. ! queue" + lPayloader("1") + " )";
}

constexpr char kRole[] = "viewer";

/// Lets in whoever knows the name and the password.
void AskForUser(GstRTSPAuth* aAuth, GstRTSPToken* aToken, const Options& aOptions) {
    gchar** const lParts = g_strsplit(aOptions.mUser, ":", 2);
    if (2 != g_strv_length(lParts)) { Fail("--user is NAME:PASSWORD"); }
    if (aOptions.mBasic) {
        gst_rtsp_auth_set_supported_methods(aAuth, GST_RTSP_AUTH_BASIC);
        gchar* const lBasic = gst_rtsp_auth_make_basic(lParts[0], lParts[1]);
        gst_rtsp_auth_add_basic(aAuth, lBasic, aToken);
        g_free(lBasic);
    } else {
        gst_rtsp_auth_set_supported_methods(aAuth, GST_RTSP_AUTH_DIGEST);
        gst_rtsp_auth_add_digest(aAuth, lParts[0], lParts[1], aToken);
    }
    g_strfreev(lParts);
}

void SpeakTLS(GstRTSPAuth* aAuth, const Options& aOptions) {
    GError* lError = nullptr;
    GTlsCertificate* const lCertificate = g_tls_certificate_new_from_file(aOptions.mCertificate, &lError);
    if (nullptr == lCertificate) { Fail(lError->message); }
    gst_rtsp_auth_set_tls_certificate(aAuth, lCertificate);
    g_object_unref(lCertificate);
}

/// Who may come in, and how.
void Guard(GstRTSPServer* aServer, const Options& aOptions) {
    GstRTSPAuth* const lAuth = gst_rtsp_auth_new();
    GstRTSPToken* const lToken = gst_rtsp_token_new(GST_RTSP_TOKEN_MEDIA_FACTORY_ROLE, G_TYPE_STRING, kRole, nullptr);
    if (nullptr != aOptions.mCertificate) { SpeakTLS(lAuth, aOptions); }
    if (nullptr != aOptions.mUser) {
        AskForUser(lAuth, lToken, aOptions);
    } else {
        gst_rtsp_auth_set_default_token(lAuth, lToken);
    }
    gst_rtsp_token_unref(lToken);
    gst_rtsp_server_set_auth(aServer, lAuth);
    g_object_unref(lAuth);
}

GstRTSPMediaFactory* MakeFactory(const Options& aOptions) {
    GstRTSPMediaFactory* const lFactory = gst_rtsp_media_factory_new();
    const std::string lLaunch = nullptr != aOptions.mLaunch ? aOptions.mLaunch : LaunchForFile(aOptions);
    gst_rtsp_media_factory_set_launch(lFactory, lLaunch.c_str());
    gst_rtsp_media_factory_set_shared(lFactory, aOptions.mShared);
    if (nullptr != aOptions.mUser || nullptr != aOptions.mCertificate) {
        gst_rtsp_media_factory_add_role(lFactory, kRole, GST_RTSP_PERM_MEDIA_FACTORY_ACCESS, G_TYPE_BOOLEAN, TRUE,
                                        GST_RTSP_PERM_MEDIA_FACTORY_CONSTRUCT, G_TYPE_BOOLEAN, TRUE, nullptr);
    }
    int lProtocols = GST_RTSP_LOWER_TRANS_UDP | GST_RTSP_LOWER_TRANS_TCP;
    if (aOptions.mTCPOnly) { lProtocols = GST_RTSP_LOWER_TRANS_TCP; }
    if (aOptions.mUDPOnly) { lProtocols = GST_RTSP_LOWER_TRANS_UDP; }
    gst_rtsp_media_factory_set_protocols(lFactory, static_cast<GstRTSPLowerTrans>(lProtocols));
    return lFactory;
}

gboolean Quit(gpointer aLoop) {
    g_main_loop_quit(static_cast<GMainLoop*>(aLoop));
    return G_SOURCE_CONTINUE;
}

gboolean QuitAtEnd(GIOChannel* aInput, GIOCondition /*aCondition*/, gpointer aLoop) {
    gchar lByte;
    gsize lRead = 0;
    if (G_IO_STATUS_NORMAL == g_io_channel_read_chars(aInput, &lByte, 1, &lRead, nullptr)) { return TRUE; }
    g_main_loop_quit(static_cast<GMainLoop*>(aLoop));
    return FALSE;
}

}  // namespace

int main(int argc, char** argv) {
    Options lOptions;
    Parse(argc, argv, lOptions);
    const char* const lPath = nullptr != lOptions.mPath ? lOptions.mPath : "/clip";
    const char* const lAddress = nullptr != lOptions.mAddress ? lOptions.mAddress : "127.0.0.1";

    if (nullptr != lOptions.mSent) { WriteDownWhatIsSent(lOptions.mSent); }
    GMainLoop* const lLoop = g_main_loop_new(nullptr, FALSE);
    GstRTSPServer* const lServer = gst_rtsp_server_new();
    gst_rtsp_server_set_address(lServer, lAddress);
    gst_rtsp_server_set_service(lServer, std::to_string(lOptions.mPort).c_str());
    GstRTSPMountPoints* const lMounts = gst_rtsp_server_get_mount_points(lServer);
    gst_rtsp_mount_points_add_factory(lMounts, lPath, MakeFactory(lOptions));
    g_object_unref(lMounts);
    if (nullptr != lOptions.mUser || nullptr != lOptions.mCertificate) { Guard(lServer, lOptions); }
    if (0 == gst_rtsp_server_attach(lServer, nullptr)) { Fail("can't listen on this address and port"); }

    const bool lIsIPv6 = nullptr != std::strchr(lAddress, ':');
    std::printf("%s://%s%s%s:%d%s\n", nullptr == lOptions.mCertificate ? "rtsp" : "rtsps", lIsIPv6 ? "[" : "", lAddress,
                lIsIPv6 ? "]" : "", gst_rtsp_server_get_bound_port(lServer), lPath);
    std::fflush(stdout);

    g_unix_signal_add(SIGTERM, Quit, lLoop);
    g_unix_signal_add(SIGINT, Quit, lLoop);
    GIOChannel* const lInput = g_io_channel_unix_new(0);
    g_io_add_watch(lInput, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR | G_IO_NVAL), QuitAtEnd, lLoop);
    g_main_loop_run(lLoop);

    g_io_channel_unref(lInput);
    g_object_unref(lServer);
    g_main_loop_unref(lLoop);
    return 0;
}
