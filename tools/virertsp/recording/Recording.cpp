#include "recording/Recording.hpp"

#include <cstdio>
#include <exception>

#include "Failure.hpp"

namespace Virertsp {

void RecordSession(const SessionOptions& aSession, const Recorder::Settings& aSettings, Observer& aObserver,
                   bool aSummary) {
    Player::MediaPlayer lPlayer;
    aSession.Open(lPlayer);
    Recorder lRecorder(lPlayer, aSettings);
    std::exception_ptr lBroken;
    try {
        lRecorder.Run(aObserver);
    } catch (const Player::Exception& lException) {
        lBroken = std::make_exception_ptr(Explain(lException, aSession.URL()));
    }
    aObserver.Conclude(lPlayer, Observer::Clock::now());
    lRecorder.Finish();
    if (aSummary) { std::fputs(lRecorder.Summary().c_str(), stdout); }
    const int lSilent = lRecorder.SilentTrack();
    Leave(lPlayer);
    if (lBroken) { std::rethrow_exception(lBroken); }
    if (lSilent >= 0) { throw Failure(kExitTimeOut, "Media of track " + std::to_string(lSilent) + " stopped coming."); }
}

}  // namespace Virertsp
