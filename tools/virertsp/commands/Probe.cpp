#include "commands/Probe.hpp"

#include <cstdio>
#include <exception>

#include "Failure.hpp"
#include "commands/Interrupt.hpp"
#include "commands/Presentation.hpp"
#include "commands/SessionOptions.hpp"

namespace Virertsp {

namespace {

constexpr char kSummary[] =
    "Opens a location, shows what the server says and what each track becomes, and\n"
    "leaves again: the server, the base URL, the range, every property of every\n"
    "track, and how long each request took. No media is waited for.";

/// False when only help was wanted.
bool ParseArguments(int aCount, char** aArguments, SessionOptions& aSession, bool& aJson) {
    gboolean lJson = FALSE;
    const GOptionEntry lEntries[] = {
        {"json", 'j', 0, G_OPTION_ARG_NONE, &lJson, "Write one JSON object, on one line", nullptr},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
    };
    const bool lGoOn = aSession.Parse(aCount, aArguments, kSummary, lEntries);
    aJson = FALSE != lJson;
    return lGoOn;
}

/// Shows what was found, even when the session failed on the way.
void Probe(const SessionOptions& aSession, bool aJson) {
    ProbePlayer lPlayer;
    std::exception_ptr lFailure;
    bool lMisunderstood = false;
    try {
        aSession.Open(lPlayer);
    } catch (const Failure& lReason) {
        lFailure = std::current_exception();
        lMisunderstood = kExitProtocol == lReason.Code();
    }
    lPlayer.Dialogue().GiveUp();
    const Presentation lPresentation(aSession.URL(), lPlayer, lMisunderstood);
    Leave(lPlayer);
    const Dialogue& lDialogue = lPlayer.Dialogue();
    if (!lDialogue.Exchanges().empty()) {
        std::fputs((aJson ? lPresentation.JsonLine(lDialogue) : lPresentation.Text(lDialogue)).c_str(), stdout);
    }
    if (lFailure) { std::rethrow_exception(lFailure); }
}

}  // namespace

int RunProbe(int aCount, char** aArguments) {
    return Guard([&] {
        SessionOptions lSession;
        bool lJson = false;
        if (!ParseArguments(aCount, aArguments, lSession, lJson)) { return; }
        CatchInterrupts();
        Probe(lSession, lJson);
    });
}

}  // namespace Virertsp
