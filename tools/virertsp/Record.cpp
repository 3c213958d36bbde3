#include "Record.hpp"

#include <cstdio>
#include <exception>

#include "Failure.hpp"
#include "Interrupt.hpp"
#include "Recorder.hpp"
#include "SessionOptions.hpp"

namespace Virertsp {

namespace {

constexpr char kSummary[] =
    "Plays a location and writes each track into a file of its own: H.264 as track0.h264 (Annex B).";

/// False when only help was wanted.
bool ParseArguments(int aCount, char** aArguments, SessionOptions& aSession, Recorder::Settings& aSettings) {
    OptionText lDirectory;
    gdouble lSeconds = 0;
    gboolean lTimes = FALSE;
    const GOptionEntry lEntries[] = {
        {"output", 'o', 0, G_OPTION_ARG_FILENAME, &lDirectory.mText,
         "Where the files go; made if it is not there; /dev/null drops everything", "DIR"},
        {"seconds", 's', 0, G_OPTION_ARG_DOUBLE, &lSeconds, "Stop after so much play time", "N"},
        {"times", 0, 0, G_OPTION_ARG_NONE, &lTimes, "Write each sample's play time in ns into trackN.times", nullptr},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
    };
    const bool lGoOn = aSession.Parse(aCount, aArguments, kSummary, lEntries);
    aSettings.mDirectory = lDirectory.Value();
    aSettings.mSeconds = lSeconds;
    aSettings.mTimes = FALSE != lTimes;
    if (lGoOn && aSettings.mDirectory.empty()) { throw Failure(kExitUsage, "Say where to with --output DIR."); }
    if (!(lSeconds >= 0 && lSeconds < 1e9)) { throw Failure(kExitUsage, "--seconds can't be that."); }
    return lGoOn;
}

/// Leaves the server. What it thinks of that does not matter any more.
void Leave(Player::MediaPlayer& aPlayer) {
    try {
        aPlayer.Close();
    } catch (const Player::Exception&) { return; }
}

void Record(const SessionOptions& aSession, const Recorder::Settings& aSettings) {
    Player::MediaPlayer lPlayer;
    aSession.Open(lPlayer);
    Recorder lRecorder(lPlayer, aSettings);
    Progress lProgress(stderr);
    std::exception_ptr lBroken;
    try {
        lRecorder.Run(lProgress);
    } catch (const Player::Exception& lException) {
        lBroken = std::make_exception_ptr(Explain(lException, aSession.URL()));
    }
    lProgress.Clear();
    lRecorder.Finish();
    std::fputs(lRecorder.Summary().c_str(), stdout);
    const int lSilent = lRecorder.SilentTrack();
    Leave(lPlayer);
    if (lBroken) { std::rethrow_exception(lBroken); }
    if (lSilent >= 0) { throw Failure(kExitTimeOut, "Media of track " + std::to_string(lSilent) + " stopped coming."); }
}

}  // namespace

int RunRecord(int aCount, char** aArguments) {
    try {
        SessionOptions lSession;
        Recorder::Settings lSettings;
        if (!ParseArguments(aCount, aArguments, lSession, lSettings)) { return kExitOk; }
        CatchInterrupts();
        Record(lSession, lSettings);
    } catch (const Failure& lFailure) {
        std::fprintf(stderr, "virertsp: %s\n", lFailure.what());
        return lFailure.Code();
    } catch (const std::exception& lError) {
        std::fprintf(stderr, "virertsp: %s\n", lError.what());
        return kExitSystem;
    }
    return kExitOk;
}

}  // namespace Virertsp
