#include "commands/Record.hpp"

#include "Failure.hpp"
#include "commands/Interrupt.hpp"
#include "recording/Progress.hpp"
#include "recording/Recording.hpp"

namespace Virertsp {

namespace {

constexpr char kSummary[] =
    "Plays a location and writes each track into a file of its own, such as track0.h264:\n"
    "  H264                      .h264  byte stream (Annex B)\n"
    "  MP4V-ES                   .m4v   elementary stream, configuration first\n"
    "  MP4A-LATM, mpeg4-generic  .aac   AAC in ADTS\n"
    "  AMR                       .amr   storage format\n"
    "Tracks that can't be written are told and dropped while the others go on.";

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
    aSettings.mSeconds = Seconds(lSeconds);
    aSettings.mTimes = FALSE != lTimes;
    if (lGoOn && aSettings.mDirectory.empty()) { throw Failure(kExitUsage, "Say where to with --output DIR."); }
    return lGoOn;
}

}  // namespace

int RunRecord(int aCount, char** aArguments) {
    return Guard([&] {
        SessionOptions lSession;
        Recorder::Settings lSettings;
        if (!ParseArguments(aCount, aArguments, lSession, lSettings)) { return; }
        CatchInterrupts();
        Progress lProgress(stderr);
        RecordSession(lSession, lSettings, lProgress, true);
    });
}

}  // namespace Virertsp
