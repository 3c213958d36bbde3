#pragma once

#include <chrono>
#include <string>

#include "MediaSessions/RTSP/Headers/Headers.hpp"

namespace Player::MediaSessions {

/// Says when a session needs a sign of life and which request is one (RFC 2326 sections 10.8 and 12.37). The clock's
/// readings come in as arguments.
class KeepAlive {
public:
    using Clock = std::chrono::steady_clock;

    /// Back to what is known of no server: a session ends after 60 s, OPTIONS is understood.
    void Reset() { *this = KeepAlive(); }
    /// Learns from a response: the time-out of its header Session, the methods of its header Public.
    void LearnFrom(const Headers& aHeaders);
    /// Any request is a sign of life.
    void Sent(Clock::time_point aNow) { mLast = aNow; }
    /// Half of the time that the session may be silent is over.
    bool IsDue(Clock::time_point aNow) const { return aNow - mLast >= std::chrono::milliseconds(mTimeOut) / 2; }
    const char* Method() const { return mHasGetParameter ? "GET_PARAMETER" : "OPTIONS"; }

private:
    std::chrono::seconds mTimeOut{60};
    bool mHasGetParameter = false;
    Clock::time_point mLast{};
};

}  // namespace Player::MediaSessions
