#pragma once

#include "commands/SessionOptions.hpp"
#include "recording/Recorder.hpp"

namespace Virertsp {

/// Records a session that plays to its end. When the connection breaks, the files are completed and the observer
/// concludes before the failure is thrown. Throws `Failure`.
/// With `aSummary` a line per track goes to standard output. `aNextPart`, if it is not null, becomes the number
/// after that of the latest part once files were begun.
void RecordPlaying(ProbePlayer& aPlayer, const std::string& aURL, const Recorder::Settings& aSettings,
                   Observer& aObserver, bool aSummary, unsigned* aNextPart = nullptr);

/// As `RecordPlaying`, for a session that is opened for the recording and left at its end.
void RecordSession(const SessionOptions& aSession, const Recorder::Settings& aSettings, Observer& aObserver,
                   bool aSummary, unsigned* aNextPart = nullptr);

}  // namespace Virertsp
