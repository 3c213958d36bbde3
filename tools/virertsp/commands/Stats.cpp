#include "commands/Stats.hpp"

#include <cstdio>

#include "Failure.hpp"
#include "commands/Interrupt.hpp"
#include "recording/Recording.hpp"
#include "recording/StatsObserver.hpp"

namespace Virertsp {

namespace {

constexpr char kSummary[] =
    "Plays a location, drops its media, and shows each track's reception every\n"
    "second; a summary at the end. Counters run from the beginning; the bit rate is\n"
    "that of the last second, RTP headers included.";

struct Settings {
    bool mJson = false;
    double mSeconds = 0;
};

/// Whoever reads along gets each line at once.
void Print(const std::string& aText) {
    std::fputs(aText.c_str(), stdout);
    std::fflush(stdout);
}

/// False when only help was wanted.
bool ParseArguments(int aCount, char** aArguments, SessionOptions& aSession, Settings& aSettings) {
    gboolean lJson = FALSE;
    OptionText lSeconds;
    const GOptionEntry lEntries[] = {
        {"json", 'j', 0, G_OPTION_ARG_NONE, &lJson, "Write one JSON object per line", nullptr},
        {"seconds", 's', 0, G_OPTION_ARG_STRING, &lSeconds.mText, "Stop after this many seconds", "N"},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
    };
    const bool lGoOn = aSession.Parse(aCount, aArguments, kSummary, lEntries);
    aSettings.mJson = FALSE != lJson;
    aSettings.mSeconds = Seconds(lSeconds);
    return lGoOn;
}

}  // namespace

int RunStats(int aCount, char** aArguments) {
    return Guard([&] {
        SessionOptions lSession;
        Settings lSettings;
        if (!ParseArguments(aCount, aArguments, lSession, lSettings)) { return; }
        CatchInterrupts();
        Recorder::Settings lDrop;
        lDrop.mDirectory = "/dev/null";
        StatsObserver lObserver(lSettings.mJson, lSettings.mSeconds, Print);
        RecordSession(lSession, lDrop, lObserver, false);
    });
}

}  // namespace Virertsp
