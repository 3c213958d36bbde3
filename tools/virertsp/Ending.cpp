#include "Ending.hpp"

namespace Virertsp {

namespace {

using End = Player::Reception::End;

struct Ending {
    End mEnd;
    const char* mPhrase;
    const char* mName;
};

constexpr Ending kEndings[] = {
    {End::kRunning, "stopped here", "stopped"},
    {End::kTimedOut, "media stopped coming", "timeout"},
    {End::kEndTime, "played to its end", "end-time"},
    {End::kBye, "ended by the server", "bye"},
};

const Ending& EndingOf(End aEnd) {
    for (const Ending& lEnding : kEndings) {
        if (lEnding.mEnd == aEnd) { return lEnding; }
    }
    return kEndings[0];
}

}  // namespace

const char* EndingPhrase(End aEnd) {
    return EndingOf(aEnd).mPhrase;
}

const char* EndingName(End aEnd) {
    return EndingOf(aEnd).mName;
}

}  // namespace Virertsp
