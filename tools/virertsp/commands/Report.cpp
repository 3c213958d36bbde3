#include "commands/Report.hpp"

#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>

#include "Failure.hpp"
#include "Json.hpp"
#include "commands/Interrupt.hpp"
#include "commands/Presentation.hpp"
#include "recording/Recording.hpp"
#include "report/Findings.hpp"
#include "report/Page.hpp"
#include "report/ReportObserver.hpp"

namespace Virertsp {

namespace {

constexpr char kSummary[] =
    "Plays a location for a while and writes one HTML page: what the server said,\n"
    "each track, plots of the reception, and pictures by ffmpeg or GStreamer.\n"
    "A FILE is what --log kept, or what \"probe --json\" and \"stats --json\" wrote.";

constexpr double kDefaultSeconds = 30;

struct Settings {
    std::string mOutput;
    std::string mLog;
    double mSeconds = kDefaultSeconds;
    bool mPictures = true;
    OutputFile::Existing mExisting = OutputFile::Existing::kKeep;
};

/// False when only help was wanted.
bool ParseArguments(int aCount, char** aArguments, SessionOptions& aSession, Settings& aSettings) {
    OptionText lOutput;
    OptionText lLog;
    OptionText lSeconds;
    gboolean lNoPictures = FALSE;
    gboolean lForce = FALSE;
    const GOptionEntry lEntries[] = {
        {"output", 'o', 0, G_OPTION_ARG_FILENAME, &lOutput.mText, "The page to write", "FILE"},
        {"seconds", 's', 0, G_OPTION_ARG_STRING, &lSeconds.mText, "Stop after that many seconds (30), 0 for never",
         "N"},
        {"log", 'l', 0, G_OPTION_ARG_FILENAME, &lLog.mText, "Write the measurements as JSON lines", "FILE"},
        {"no-pictures", 0, 0, G_OPTION_ARG_NONE, &lNoPictures, "Decode no pictures", nullptr},
        {"force", 'f', 0, G_OPTION_ARG_NONE, &lForce, "Replace existing files", nullptr},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
    };
    const bool lGoOn = aSession.Parse(aCount, aArguments, kSummary, lEntries, Operands::kURLOrFile);
    aSettings.mOutput = lOutput.Value();
    aSettings.mLog = lLog.Value();
    aSettings.mSeconds = Seconds(lSeconds, kDefaultSeconds);
    aSettings.mPictures = FALSE == lNoPictures;
    if (FALSE != lForce) { aSettings.mExisting = OutputFile::Existing::kReplace; }
    if (lGoOn && aSettings.mOutput.empty()) { throw Failure(kExitUsage, "Missing --output FILE."); }
    if (lGoOn && aSession.IsFile() && !aSettings.mLog.empty()) {
        throw Failure(kExitUsage, "--log needs a location, not a file.");
    }
    return lGoOn;
}

/// Plays the location and prints a line for everything observed, also before a failure. Throws `Failure`.
void Examine(const SessionOptions& aSession, double aSeconds, const StatsObserver::Print& aPrint, Gallery* aGallery) {
    ProbePlayer lPlayer;
    const Visit lVisit(lPlayer);
    const auto lTell = [&](bool aMisunderstood) {
        lPlayer.Dialogue().GiveUp();
        aPrint(Presentation(aSession.URL(), lPlayer, aMisunderstood).JsonLine(lPlayer.Dialogue()));
    };
    try {
        aSession.Open(lPlayer);
    } catch (const Failure& lFailure) {
        lTell(kExitProtocol == lFailure.Code());
        throw;
    }
    lTell(false);
    ReportObserver lObserver(aSeconds, aPrint, aGallery);
    Recorder::Settings lDrop;
    lDrop.mDirectory = "/dev/null";
    RecordPlaying(lPlayer, aSession.URL(), lDrop, lObserver, false);
}

std::string FailureLine(const char* aText) {
    Json lJson;
    lJson.Open('{').Key("type").String("failure").Key("text").String(aText).Close();
    return lJson.Text() + "\n";
}

std::string PictureLine(Player::TrackIdx aTrack, const Gallery::Picture& aPicture) {
    const auto* const lData = reinterpret_cast<const guchar*>(aPicture.mJpeg.data());
    gchar* const lText = g_base64_encode(lData, aPicture.mJpeg.size());
    Json lJson;
    lJson.Open('{').Key("type").String("picture").Key("track").Number(aTrack);
    lJson.Key("play_s").Decimal(aPicture.mPlayTime.ToSeconds(), 3).Key("jpeg").String(lText).Close();
    g_free(lText);
    return lJson.Text() + "\n";
}

/// The page holds also what came before a failure.
void ReportLocation(const SessionOptions& aSession, const Settings& aSettings) {
    OutputFile lPage(aSettings.mOutput, aSettings.mExisting);
    std::optional<OutputFile> lLog;
    if (!aSettings.mLog.empty()) { lLog.emplace(aSettings.mLog, aSettings.mExisting); }
    Findings lFindings;
    const StatsObserver::Print lPrint = [&](const std::string& aLine) {
        lFindings.Take(aLine);
        if (lLog) { lLog->Write(aLine.data(), aLine.size()); }
    };
    std::exception_ptr lFailure;
    Gallery lGallery;
    try {
        Examine(aSession, aSettings.mSeconds, lPrint, aSettings.mPictures ? &lGallery : nullptr);
    } catch (const Failure& lReason) {
        lFailure = std::current_exception();
        lPrint(FailureLine(lReason.what()));
    }
    for (const Gallery::Picture& lPicture : lGallery.Decode()) {
        lPrint(PictureLine(lGallery.Track(), lPicture));
    }
    if (lLog) { lLog->Close(); }
    const std::string lText = Page(lFindings).Text();
    lPage.Write(lText.data(), lText.size());
    lPage.Close();
    if (lFailure) { std::rethrow_exception(lFailure); }
}

void ReportFile(const std::string& aPath, const Settings& aSettings) {
    std::ifstream lFile(aPath);
    if (!lFile) { throw Failure(kExitUsage, "Can't read " + aPath + ": " + std::strerror(errno) + "."); }
    Findings lFindings;
    bool lAny = false;
    for (std::string lLine; std::getline(lFile, lLine);) {
        lAny = lFindings.Take(lLine) || lAny;
    }
    if (!lAny) { throw Failure(kExitUsage, aPath + " contains no lines for a report."); }
    OutputFile lPage(aSettings.mOutput, aSettings.mExisting);
    const std::string lText = Page(lFindings).Text();
    lPage.Write(lText.data(), lText.size());
    lPage.Close();
}

}  // namespace

int RunReport(int aCount, char** aArguments) {
    return Guard([&] {
        SessionOptions lSession;
        Settings lSettings;
        if (!ParseArguments(aCount, aArguments, lSession, lSettings)) { return; }
        if (lSession.IsFile()) { return ReportFile(lSession.Given().front(), lSettings); }
        CatchInterrupts();
        ReportLocation(lSession, lSettings);
    });
}

}  // namespace Virertsp
