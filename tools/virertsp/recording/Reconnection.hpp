#pragma once

#include "recording/Recording.hpp"

namespace Virertsp {

/// How long to wait before the next attempt: each pause is twice as long as the one before, up to a minute.
class Pauses {
public:
    std::chrono::seconds Next();
    /// After a session that went well for a while.
    void Reset() { mNext = kShortest; }

private:
    static constexpr std::chrono::seconds kShortest{1};

    std::chrono::seconds mNext = kShortest;
};

/// Records session after session, each into files of its own, until one ends as the server means it to, the user wants
/// it, or a failure comes that no attempt can heal. Throws `Failure`.
void RecordSessions(const SessionOptions& aSession, Recorder::Settings aSettings, Observer& aObserver);

}  // namespace Virertsp
