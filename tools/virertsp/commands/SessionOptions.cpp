#include "commands/SessionOptions.hpp"

#include <strings.h>

#include <memory>

#include "Failure.hpp"
#include "FormatName.hpp"
#include "Player/Report.hpp"
#include "Printable.hpp"
#include "commands/Configuration.hpp"
#include "commands/Interrupt.hpp"

namespace Virertsp {

namespace {

constexpr char kScheme[] = "rtsp://";

struct FreeContext {
    void operator()(GOptionContext* aContext) const { g_option_context_free(aContext); }
};
/// RTSP's 461.
constexpr unsigned kUnsupportedTransport = 0x461;

Failure NothingPlayable(const ProbePlayer& aPlayer) {
    std::string lFormats;
    for (const ProbePlayer::PropertiesPtr& lTrack : aPlayer.DescribedTracks()) {
        lFormats += (lFormats.empty() ? ": " : ", ") + Printable(FormatName(*lTrack));
    }
    return Failure(kExitNothingPlayable,
                   "The presentation has no track of a format that can be played" + lFormats + ".");
}

using ContextPtr = std::unique_ptr<GOptionContext, FreeContext>;

}  // namespace

SessionOptions::~SessionOptions() {
    g_strfreev(mConfig);
}

bool SessionOptions::Parse(int aCount, char** aArguments, const char* aSummary, const GOptionEntry* aEntries) {
    gboolean lHelp = FALSE;
    const GOptionEntry lCommon[] = {
        {"tcp", 't', 0, G_OPTION_ARG_NONE, &mTCP, "Ask for media over the RTSP connection instead of UDP", nullptr},
        {"config", 'c', 0, G_OPTION_ARG_STRING_ARRAY, &mConfig, "Set a value of the session, may be repeated",
         "KEY=VALUE"},
        {"verbose", 'v', 0, G_OPTION_ARG_NONE, &mVerbose, "Show the messages of the library", nullptr},
        {"help", 'h', 0, G_OPTION_ARG_NONE, &lHelp, "Show this help", nullptr},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
    };
    g_set_prgname((std::string("virertsp ") + aArguments[0]).c_str());
    const ContextPtr lContext(g_option_context_new("URL"));
    g_option_context_set_summary(lContext.get(), aSummary);
    g_option_context_set_description(lContext.get(), (ConfigurationHelp() + "\n" + ExitCodeHelp()).c_str());
    // The parser's own help would end the program.
    g_option_context_set_help_enabled(lContext.get(), FALSE);
    g_option_context_add_main_entries(lContext.get(), aEntries, nullptr);
    g_option_context_add_main_entries(lContext.get(), lCommon, nullptr);
    GError* lError = nullptr;
    if (!g_option_context_parse(lContext.get(), &aCount, &aArguments, &lError)) {
        const std::string lText = lError->message;
        g_error_free(lError);
        throw Failure(kExitUsage, lText + ".");
    }
    if (lHelp) {
        gchar* const lText = g_option_context_get_help(lContext.get(), FALSE, nullptr);
        g_print("%s", lText);
        g_free(lText);
        return false;
    }
    TakeURL(aCount, aArguments);
    return true;
}

void SessionOptions::TakeURL(int aCount, char** aArguments) {
    if (2 != aCount) { throw Failure(kExitUsage, "Give one URL, such as rtsp://host/clip."); }
    mURL = aArguments[1];
    if (0 != strncasecmp(mURL.c_str(), kScheme, sizeof(kScheme) - 1)) {
        throw Failure(kExitUsage, "A location begins with " + std::string(kScheme) + ".");
    }
    const std::string lAuthority =
        mURL.substr(sizeof(kScheme) - 1, mURL.find('/', sizeof(kScheme) - 1) - (sizeof(kScheme) - 1));
    if (std::string::npos != lAuthority.find('@')) {
        throw Failure(kExitUsage, "A location with a user and a password can't be played.");
    }
}

void SessionOptions::Open(ProbePlayer& aPlayer) const {
    if (!Verbose()) { Player::SetReporter(nullptr); }
    Configure(aPlayer, FALSE != mTCP, mConfig);
    const ImpatientWait lWait(kExitTimeOut);
    try {
        aPlayer.Play(mURL, Player::Time(0));
    } catch (const Player::Exception& lException) { throw WithAdvice(Explain(lException, mURL), lException); }
    if (0 == aPlayer.GetTrackCount()) { throw NothingPlayable(aPlayer); }
}

Failure SessionOptions::WithAdvice(const Failure& aFailure, const Player::Exception& aException) const {
    if (kExitRefused != aFailure.Code() || kUnsupportedTransport != aException.Error()) { return aFailure; }
    return Failure(aFailure.Code(),
                   aFailure.what() + std::string(FALSE != mTCP ? " Try it without --tcp." : " Try it with --tcp."));
}

double Seconds(double aValue) {
    if (!(aValue >= 0 && aValue < 1e9)) { throw Failure(kExitUsage, "--seconds can't be that."); }
    return aValue;
}

void Leave(Player::MediaPlayer& aPlayer) {
    const ImpatientWait lWait(kExitOk);
    try {
        // The request is what counts; the answer changes nothing any more.
        aPlayer.SetConfigParam("RTSP:TimeOutAfter", "2");
        aPlayer.Close();
    } catch (const Player::Exception&) { return; }
}

}  // namespace Virertsp
