#pragma once

#include "MediaSessions/RTSP/Headers/Headers.hpp"

namespace Player::MediaSessions {

/// What the server says of itself in its answers to DESCRIBE.
struct ServerFeatures {
    /// Set-ups and the PLAY may be sent before any of them is answered (3GPP TS 26.234 section 5.5).
    bool mPipelined = false;
    /// A PLAY may switch a running session to another presentation.
    bool mSwitchSupported = false;
    /// It paces its media itself, so that none is gathered before playing.
    bool mServerIsStrand = false;

    /// These features with those replaced that the headers of a response speak of.
    ServerFeatures With(const Headers& aHeaders) const;
};

}  // namespace Player::MediaSessions
