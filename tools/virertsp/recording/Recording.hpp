#pragma once

#include "commands/SessionOptions.hpp"
#include "recording/Recorder.hpp"

namespace Virertsp {

/// Opens the session and records it to its end. Also when the connection breaks, what came is completed and told
/// before the failure goes on. Throws `Failure`.
/// With `aSummary` a line per track goes to standard output. `aNextPart`, if it is not null, becomes the number
/// behind that of the latest part once files were begun.
void RecordSession(const SessionOptions& aSession, const Recorder::Settings& aSettings, Observer& aObserver,
                   bool aSummary, unsigned* aNextPart = nullptr);

}  // namespace Virertsp
