#pragma once

#include <list>
#include <string>

#include "MediaSessions/RTSP/Dialect.hpp"
#include "Player/Buffer.hpp"
#include "Player/Properties.hpp"
#include "Player/Ptr.hpp"
#include "Player/Time.hpp"

namespace Player::MediaSessions {

/// A presentation: what the server describes of it, and which range is played. A value, built aside: it takes
/// the place of another as a whole or not at all.
struct Description {
    using Track = SharedPtr<Properties, SharedObject>;

    SharedPtr<Properties, SharedObject> mSessionProperties;
    /// One for each medium that is offered.
    std::list<Track> mTrackProperties;
    BaseURL mBase;
    Time mAvailableStart;
    Time mAvailableEnd;
    // From the PLAY response; 0 before.
    Time mPlayingStart;
    Time mPlayingEnd;

    /// Reads a description; throws as `ParseSDP` does. One that is too short to say anything is empty.
    static Description Parse(const Buffer& aSDP);

    /// Something can be played of it.
    bool IsComplete() const { return mSessionProperties && !mTrackProperties.empty(); }
    /// Sets the "URL" of the session, and that of each track as the dialect has it.
    void SetBase(const BaseURL& aBase, const Dialect& aDialect);
    /// The first track of a media type, or null.
    const Properties* FirstOfType(const std::string& aMediaType) const;

private:
    /// The session's value of a key, else the first that a track has.
    std::string First(const char* aKey) const;
};

}  // namespace Player::MediaSessions
