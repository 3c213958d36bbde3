#include "commands/Watch.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "Failure.hpp"
#include "Player/Report.hpp"
#include "commands/Interrupt.hpp"
#include "watch/Board.hpp"
#include "watch/Watcher.hpp"

namespace Virertsp {

namespace {

using Clock = Location::Clock;

constexpr char kSummary[] =
    "Plays several locations at once, drops their media, and shows a line for each,\n"
    "refreshed every second: the state, the bit rate, the losses of the last second\n"
    "and of the session, and the last failure. After a failure, or the end, it tries\n"
    "again after growing pauses. Ctrl-C ends it.";

constexpr std::chrono::seconds kInterval(1);
constexpr std::chrono::milliseconds kGlance(50);
/// What the servers get to answer once the user has had enough.
constexpr std::chrono::milliseconds kLastWait(700);

struct Settings {
    bool mJson = false;
    double mSeconds = 0;
};

/// False when only help was wanted.
bool ParseArguments(int aCount, char** aArguments, SessionOptions& aSession, Settings& aSettings) {
    gboolean lJson = FALSE;
    OptionText lSeconds;
    const GOptionEntry lEntries[] = {
        {"json", 'j', 0, G_OPTION_ARG_NONE, &lJson, "Write one JSON object per second", nullptr},
        {"seconds", 's', 0, G_OPTION_ARG_STRING, &lSeconds.mText, "Stop after this many seconds", "N"},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
    };
    const bool lGoOn = aSession.Parse(aCount, aArguments, kSummary, lEntries, Operands::kURLs);
    aSettings.mJson = FALSE != lJson;
    aSettings.mSeconds = Seconds(lSeconds);
    return lGoOn;
}

/// Interrupts come to the thread that shows, which passes them on to the others.
class NoInterrupts {
public:
    NoInterrupts() {
        sigset_t lSignals;
        sigemptyset(&lSignals);
        sigaddset(&lSignals, SIGINT);
        sigaddset(&lSignals, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &lSignals, &mBefore);
    }
    NoInterrupts(const NoInterrupts&) = delete;
    NoInterrupts& operator=(const NoInterrupts&) = delete;
    ~NoInterrupts() { pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }

private:
    sigset_t mBefore{};
};

using Watchers = std::vector<std::unique_ptr<Watcher>>;

Board::Kind KindOfOutput(bool aJson) {
    if (aJson) { return Board::Kind::kJson; }
    return 0 != isatty(STDOUT_FILENO) ? Board::Kind::kTerminal : Board::Kind::kLines;
}

void Show(const Watchers& aWatchers, Board& aBoard, Clock::time_point aNow) {
    for (std::size_t i = 0; i < aWatchers.size(); ++i) {
        aBoard.Line(i).Update(aWatchers[i]->Watched().Look(), aNow);
    }
    winsize lSize = {};
    const bool lKnown = 0 == ioctl(STDOUT_FILENO, TIOCGWINSZ, &lSize) && 0 != lSize.ws_col && 0 != lSize.ws_row;
    const std::size_t lColumns = lKnown ? lSize.ws_col : 80;
    const std::size_t lRows = lKnown ? lSize.ws_row : 24;
    std::fputs(aBoard.Text(lColumns, lRows).c_str(), stdout);
    std::fflush(stdout);
}

/// Lets all leave their servers at once. A server that does not answer is not waited for, and neither is one that was
/// being called.
void StopAll(const Watchers& aWatchers) {
    for (const auto& lWatcher : aWatchers) {
        lWatcher->Stop();
    }
    const auto lAllEnded = [&] {
        return std::all_of(aWatchers.begin(), aWatchers.end(), [](const auto& aOne) { return aOne->HasEnded(); });
    };
    for (const Clock::time_point lEnd = Clock::now() + kLastWait; !lAllEnded();) {
        if (Clock::now() >= lEnd) { std::_Exit(kExitOk); }
        std::this_thread::sleep_for(kGlance);
    }
}

void Watch(const SessionOptions& aSession, const Settings& aSettings) {
    if (!aSession.Verbose()) { Player::SetReporter(nullptr); }
    aSession.Check();
    std::vector<std::string> lURLs;
    Watchers lWatchers;
    {
        const NoInterrupts lNone;
        for (const std::string& lURL : aSession.Given()) {
            lURLs.push_back(SessionOptions::WithoutUser(lURL));
            lWatchers.push_back(std::make_unique<Watcher>(aSession, lURL));
        }
    }
    Board lBoard(KindOfOutput(aSettings.mJson), lURLs);
    const Clock::time_point lStart = Clock::now();
    Clock::time_point lNext = lStart;
    for (Clock::time_point lNow = lStart; !Interrupted(); lNow = Clock::now()) {
        if (aSettings.mSeconds > 0 && lNow - lStart >= std::chrono::duration<double>(aSettings.mSeconds)) { break; }
        if (lNow >= lNext) {
            Show(lWatchers, lBoard, lNow);
            lNext += kInterval;
        }
        std::this_thread::sleep_for(kGlance);
    }
    StopAll(lWatchers);
}

}  // namespace

int RunWatch(int aCount, char** aArguments) {
    return Guard([&] {
        SessionOptions lSession;
        Settings lSettings;
        if (!ParseArguments(aCount, aArguments, lSession, lSettings)) { return; }
        CatchInterrupts();
        Watch(lSession, lSettings);
    });
}

}  // namespace Virertsp
