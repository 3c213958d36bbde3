#include "commands/Record.hpp"

#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "Failure.hpp"
#include "Player/String.hpp"
#include "commands/Interrupt.hpp"
#include "recording/Progress.hpp"
#include "recording/Reconnection.hpp"
#include "recording/Recording.hpp"

namespace Virertsp {

namespace {

constexpr char kSummary[] =
    "Plays a location and writes each track into a file of its own:\n"
    "  H264                      .h264  byte stream (Annex B)\n"
    "  MP4V-ES                   .m4v   elementary stream, configuration first\n"
    "  MP4A-LATM, mpeg4-generic  .aac   AAC in ADTS\n"
    "  AMR                       .amr   storage format\n"
    "or with an --output that ends in .mp4 or .mkv all tracks into that one file.\n"
    "Tracks that can't be written are reported and dropped; the others go on.";

constexpr const char* kForeignEndings[] = {".264", ".3gp", ".aac", ".amr", ".avi", ".flv", ".h264", ".m4a", ".m4v",
                                           ".mka", ".mov", ".mp3", ".mpg", ".ogg", ".ts",  ".wav",  ".webm"};

/// Numbers with commas between them.
std::set<Player::TrackIdx> Chosen(const std::string& aText) {
    std::set<Player::TrackIdx> lChosen;
    std::vector<std::string> lNumbers;
    if (!aText.empty()) { Player::Split(aText, ',', lNumbers); }
    for (const std::string& lNumber : lNumbers) {
        if (lNumber.empty() || lNumber.size() > 4 || std::string::npos != lNumber.find_first_not_of("0123456789")) {
            throw Failure(kExitUsage, "--tracks takes numbers such as 0,2.");
        }
        lChosen.insert(Player::DecimalToUInt(lNumber));
    }
    return lChosen;
}

/// A name that means a file, of a kind that is not written, would become a directory.
void CheckOutput(const std::string& aPath) {
    if (aPath.empty()) { throw Failure(kExitUsage, "Missing --output DIR."); }
    const std::string lEnding = std::filesystem::path(aPath).extension();
    const bool lIsForeign = std::any_of(std::begin(kForeignEndings), std::end(kForeignEndings),
                                        [&](const char* aEnding) { return 0 == strcasecmp(aEnding, lEnding.c_str()); });
    std::error_code lNone;
    if (lIsForeign && !std::filesystem::is_directory(aPath, lNone)) {
        throw Failure(kExitUsage, "--output takes a directory, or a file that ends in .mp4 or .mkv.");
    }
}

/// False when only help was wanted.
bool ParseArguments(int aCount, char** aArguments, SessionOptions& aSession, Recorder::Settings& aSettings,
                    bool& aReconnect) {
    OptionText lDirectory;
    OptionText lSeconds;
    gboolean lTimes = FALSE;
    gboolean lForce = FALSE;
    gboolean lReconnect = FALSE;
    OptionText lTracks;
    OptionText lSplit;
    const GOptionEntry lEntries[] = {
        {"output", 'o', 0, G_OPTION_ARG_FILENAME, &lDirectory.mText, "Directory, or an .mp4 or .mkv file; or /dev/null",
         "DIR|FILE"},
        {"seconds", 's', 0, G_OPTION_ARG_STRING, &lSeconds.mText, "Stop after this many seconds of play time", "N"},
        {"tracks", 0, 0, G_OPTION_ARG_STRING, &lTracks.mText, "Write only these tracks, such as 0,2", "LIST"},
        {"force", 'f', 0, G_OPTION_ARG_NONE, &lForce, "Replace existing files", nullptr},
        {"split", 0, 0, G_OPTION_ARG_STRING, &lSplit.mText, "New files after each 10min, 100MB, ...", "TIME|SIZE"},
        {"reconnect", 'r', 0, G_OPTION_ARG_NONE, &lReconnect, "After a failure go on in new files", nullptr},
        {"times", 0, 0, G_OPTION_ARG_NONE, &lTimes, "Write the samples' play times into trackN.times", nullptr},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
    };
    const bool lGoOn = aSession.Parse(aCount, aArguments, kSummary, lEntries);
    aSettings.mDirectory = lDirectory.Value();
    aSettings.mSeconds = Seconds(lSeconds);
    aSettings.mTimes = FALSE != lTimes;
    aSettings.mForce = FALSE != lForce;
    aReconnect = FALSE != lReconnect;
    aSettings.mChosen = Chosen(lTracks.Value());
    if (nullptr != lSplit.mText) { aSettings.mSplit = Split::Of(lSplit.Value()); }
    if (lGoOn) { CheckOutput(aSettings.mDirectory); }
    return lGoOn;
}

}  // namespace

int RunRecord(int aCount, char** aArguments) {
    return Guard([&] {
        SessionOptions lSession;
        Recorder::Settings lSettings;
        bool lReconnect = false;
        if (!ParseArguments(aCount, aArguments, lSession, lSettings, lReconnect)) { return; }
        CatchInterrupts();
        Progress lProgress(stderr);
        if (lReconnect) { return RecordSessions(lSession, lSettings, lProgress); }
        RecordSession(lSession, lSettings, lProgress, true);
    });
}

}  // namespace Virertsp
