#include "recording/Recording.hpp"

#include <cstdio>
#include <exception>

#include "Failure.hpp"

namespace Virertsp {

void RecordSession(const SessionOptions& aSession, const Recorder::Settings& aSettings, Observer& aObserver,
                   bool aSummary, unsigned* aNextPart) {
    ProbePlayer lPlayer;
    const Visit lVisit(lPlayer);
    aSession.Open(lPlayer);
    RecordPlaying(lPlayer, aSession.URL(), aSettings, aObserver, aSummary, aNextPart);
}

void RecordPlaying(ProbePlayer& aPlayer, const std::string& aURL, const Recorder::Settings& aSettings,
                   Observer& aObserver, bool aSummary, unsigned* aNextPart) {
    Recorder lRecorder(aPlayer, aSettings);
    std::exception_ptr lBroken;
    try {
        lRecorder.Run(aObserver);
    } catch (const Player::Exception& lException) { lBroken = std::make_exception_ptr(Explain(lException, aURL)); }
    if (nullptr != aNextPart) { *aNextPart = lRecorder.Part() + 1; }
    aObserver.Conclude(aPlayer, Observer::Clock::now());
    lRecorder.Finish();
    if (aSummary) { std::fputs(lRecorder.Summary().c_str(), stdout); }
    // Leaving may take a while, and may be cut short.
    std::fflush(stdout);
    if (lBroken) { std::rethrow_exception(lBroken); }
    const std::string lComplaint = lRecorder.Complaint();
    if (!lComplaint.empty()) { throw Failure(kExitTimeOut, lComplaint); }
}

}  // namespace Virertsp
