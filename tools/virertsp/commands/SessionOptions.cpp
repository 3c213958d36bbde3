#include "commands/SessionOptions.hpp"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "Failure.hpp"
#include "FormatName.hpp"
#include "Player/Keys.hpp"
#include "Player/Report.hpp"
#include "Player/URL.hpp"
#include "Printable.hpp"
#include "commands/Completion.hpp"
#include "commands/Configuration.hpp"
#include "commands/Interrupt.hpp"

namespace Virertsp {

namespace {

namespace Setting = Player::Setting;

constexpr char kScheme[] = "rtsp://";
constexpr char kSecureScheme[] = "rtsps://";

struct FreeContext {
    void operator()(GOptionContext* aContext) const { g_option_context_free(aContext); }
};
// Statuses of RTSP.
constexpr unsigned kUnauthorized = 0x401;
constexpr unsigned kUnsupportedTransport = 0x461;

constexpr guint64 kMaxPort = 65535;

constexpr char kPasswordVariable[] = "VIRERTSP_PASSWORD";

/// Never from the command line, which every user of the machine can read.
std::string Password() {
    const char* const lGiven = std::getenv(kPasswordVariable);
    if (nullptr != lGiven) { return lGiven; }
    const char* const lTyped = 0 != isatty(STDIN_FILENO) ? getpass("Password: ") : nullptr;
    if (nullptr == lTyped) {
        throw Failure(kExitUsage, "--user needs a password, in the environment's " + std::string(kPasswordVariable) +
                                      " or typed on a terminal.");
    }
    return lTyped;
}

Failure NothingPlayable(const ProbePlayer& aPlayer) {
    std::string lFormats;
    for (const ProbePlayer::PropertiesPtr& lTrack : aPlayer.DescribedTracks()) {
        lFormats += (lFormats.empty() ? ": " : ", ") + Printable(FormatName(*lTrack));
    }
    return Failure(kExitNothingPlayable,
                   "The presentation has no track of a format that can be played" + lFormats + ".");
}

/// Two tables that empty entries end.
std::vector<GOptionEntry> Entries(const GOptionEntry* aFirst, const GOptionEntry* aSecond) {
    std::vector<GOptionEntry> lEntries;
    for (const GOptionEntry* lTable : {aFirst, aSecond}) {
        for (; nullptr != lTable->long_name; ++lTable) {
            lEntries.push_back(*lTable);
        }
    }
    return lEntries;
}

bool IsLocation(const std::string& aText) {
    return 0 == strncasecmp(aText.c_str(), kScheme, sizeof(kScheme) - 1) ||
           0 == strncasecmp(aText.c_str(), kSecureScheme, sizeof(kSecureScheme) - 1);
}

bool IsPort(const std::string& aText) {
    const bool lIsNumber = std::all_of(aText.begin(), aText.end(), [](char aChar) { return g_ascii_isdigit(aChar); });
    const guint64 lPort = g_ascii_strtoull(aText.c_str(), nullptr, 10);
    return lIsNumber && lPort > 0 && lPort <= kMaxPort;
}

/// Throws `Failure` for a location without a server, or with a port that no server can have.
void CheckAddress(const std::string& aLocation) {
    const std::string lServer = Player::URL::Authority(Player::URL::WithoutUserInfo(aLocation));
    // An IPv6 address has colons of its own, in brackets.
    const std::size_t lBracket = lServer.find(']');
    const std::size_t lColon = lServer.find(':', std::string::npos == lBracket ? 0 : lBracket);
    if (lServer.empty() || 0 == lColon) { throw Failure(kExitUsage, "The location names no server."); }
    if (std::string::npos == lColon || IsPort(lServer.substr(lColon + 1))) { return; }
    throw Failure(kExitUsage, "The port of a location is a number from 1 to 65535.");
}

const char* OperandsName(Operands aOperands) {
    switch (aOperands) {
        case Operands::kURLs: return "URL...";
        case Operands::kURLOrFile: return "URL|FILE";
        case Operands::kURL: break;
    }
    return "URL";
}

using ContextPtr = std::unique_ptr<GOptionContext, FreeContext>;

}  // namespace

SessionOptions::~SessionOptions() {
    g_strfreev(mConfig);
}

bool SessionOptions::Parse(int aCount, char** aArguments, const char* aSummary, const GOptionEntry* aEntries,
                           Operands aOperands) {
    gboolean lHelp = FALSE;
    const GOptionEntry lCommon[] = {
        {"transport", 0, 0, G_OPTION_ARG_STRING, &mTransport.mText, "Transports for media: udp, tcp, or udp,tcp",
         "LIST"},
        {"tcp", 't', 0, G_OPTION_ARG_NONE, &mTCP, "Short for --transport tcp", nullptr},
        {"user", 'u', 0, G_OPTION_ARG_STRING, &mUser.mText, "User; password: VIRERTSP_PASSWORD or terminal", "NAME"},
        {"authorities", 0, 0, G_OPTION_ARG_FILENAME, &mAuthorities.mText, "Certificates that vouch for rtsps servers",
         "FILE"},
        {"classic", 0, 0, G_OPTION_ARG_NONE, &mClassic, "Speak the classic profile instead of the modern", nullptr},
        {"config", 'c', 0, G_OPTION_ARG_STRING_ARRAY, &mConfig, "Set a value of the session, may be repeated",
         "KEY=VALUE"},
        {"verbose", 'v', 0, G_OPTION_ARG_NONE, &mVerbose, "Show the messages of the library", nullptr},
        {"help", 'h', 0, G_OPTION_ARG_NONE, &lHelp, "Show this help", nullptr},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
    };
    if (aCount > 1 && 0 == std::strcmp(aArguments[1], kComplete)) {
        g_print("%s", Candidates(Entries(aEntries, lCommon), Words(aArguments + 2, aArguments + aCount),
                                 Operands::kURLOrFile == aOperands)
                          .c_str());
        return false;
    }
    g_set_prgname((std::string("virertsp ") + aArguments[0]).c_str());
    const ContextPtr lContext(g_option_context_new(OperandsName(aOperands)));
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
    TakeOperands(aCount, aArguments, aOperands);
    const std::string lTransport = mTransport.Value();
    if (!lTransport.empty() &&
        std::end(kTransports) == std::find(std::begin(kTransports), std::end(kTransports), lTransport)) {
        throw Failure(kExitUsage, "--transport takes udp, tcp or udp,tcp.");
    }
    if (!mUser.Value().empty()) { mPassword = Password(); }
    return true;
}

void SessionOptions::TakeOperands(int aCount, char** aArguments, Operands aOperands) {
    if (aCount < 2 || (aCount > 2 && Operands::kURLs != aOperands)) {
        throw Failure(kExitUsage, Operands::kURLs == aOperands ? "Give URLs, such as rtsp://host/clip."
                                                               : "Give one URL, such as rtsp://host/clip.");
    }
    mGiven.assign(aArguments + 1, aArguments + aCount);
    for (const std::string& lGiven : mGiven) {
        if (IsLocation(lGiven)) {
            CheckAddress(lGiven);
        } else if (Operands::kURLOrFile != aOperands) {
            throw Failure(kExitUsage, "A location begins with " + std::string(kScheme) + " or " + kSecureScheme + ".");
        }
    }
}

bool SessionOptions::IsFile() const {
    return !IsLocation(mGiven.front());
}

void SessionOptions::Open(ProbePlayer& aPlayer) const {
    if (!Verbose()) { Player::SetReporter(nullptr); }
    const ImpatientWait lWait(kExitTimeOut);
    Play(aPlayer, mGiven.front());
}

void SessionOptions::Check() const {
    ProbePlayer lPlayer;
    Configure(lPlayer, Settings(), mConfig);
}

void SessionOptions::Play(ProbePlayer& aPlayer, const std::string& aURL) const {
    Configure(aPlayer, Settings(), mConfig);
    try {
        aPlayer.Play(aURL, Player::Time(0));
    } catch (const Player::Exception& lException) {
        throw WithAdvice(Explain(lException, aURL, aPlayer.Dialogue().IsRedirected()), lException,
                         !mUser.Value().empty() || aURL != WithoutUser(aURL));
    }
    if (0 == aPlayer.GetTrackCount()) { throw NothingPlayable(aPlayer); }
}

Values SessionOptions::Settings() const {
    Values lValues = {{Setting::kProfile, FALSE != mClassic ? "classic" : "modern"}};
    const std::string lTransport = FALSE != mTCP ? "tcp" : mTransport.Value();
    if (!lTransport.empty()) { lValues[Setting::kTransports] = lTransport; }
    if ("tcp" == lTransport) { lValues[Setting::kUseInterleavedRTP] = "1"; }
    if (!mAuthorities.Value().empty()) { lValues[Setting::kTLSAuthorities] = mAuthorities.Value(); }
    if (!mUser.Value().empty()) {
        lValues[Setting::kUserName] = mUser.Value();
        lValues[Setting::kPassword] = mPassword;
    }
    return lValues;
}

std::string SessionOptions::WithoutUser(const std::string& aURL) {
    const std::size_t lUser = aURL.find("//") + 2;
    const std::size_t lAt = aURL.substr(0, aURL.find('/', lUser)).rfind('@');
    return std::string::npos == lAt ? aURL : aURL.substr(0, lUser) + aURL.substr(lAt + 1);
}

Failure SessionOptions::WithAdvice(const Failure& aFailure, const Player::Exception& aException, bool aHasUser) const {
    if (kExitRefused != aFailure.Code()) { return aFailure; }
    std::string lAdvice;
    if (kUnsupportedTransport == aException.Error()) {
        lAdvice = FALSE != mTCP ? " Try it without --tcp." : " Try it with --tcp.";
    } else if (kUnauthorized == aException.Error() && FALSE == mClassic) {
        lAdvice = aHasUser ? " Check the name and the password." : " Try it with --user.";
    }
    return Failure(aFailure.Code(), aFailure.what() + lAdvice);
}

double Seconds(const OptionText& aGiven, double aDefault) {
    if (nullptr == aGiven.mText) { return aDefault; }
    gchar* lEnd = nullptr;
    const double lSeconds = g_ascii_strtod(aGiven.mText, &lEnd);
    if (aGiven.mText == lEnd || '\0' != *lEnd || !(lSeconds >= 0 && lSeconds < 1e9)) {
        throw Failure(kExitUsage, "--seconds takes a number from 0 to 1000000000.");
    }
    return lSeconds;
}

void CloseQuietly(Player::MediaPlayer& aPlayer) {
    try {
        // The request is what counts; the answer changes nothing any more.
        aPlayer.SetConfigParam(Setting::kTimeOutAfter, "2");
        aPlayer.Close();
    } catch (const Player::Exception&) { return; }
}

void Leave(Player::MediaPlayer& aPlayer) {
    const ImpatientWait lWait(kExitOk);
    CloseQuietly(aPlayer);
}

}  // namespace Virertsp
