#pragma once

#include <string>

#include "Player/Properties.hpp"
#include "Player/Reception.hpp"
#include "Player/Time.hpp"

namespace Player {

class MediaHandler;

/// A session with a media server, driven by its owner through these operations alone.
/// All of them may throw `Exception` kinds; the session can be played again afterwards.
class MediaSession : public SharedObject {
public:
    MediaSession() : SharedObject(0) {}

    /// Reads every setting anew; an absent one returns to its default.
    virtual void Configure(const Properties& aConfig) = 0;
    /// Starts the presentation, or switches to it, at `aStart`; tracks and ranges go to `aHandler`.
    virtual void Play(MediaHandler& aHandler, const std::string& aURL, Time aStart) = 0;
    virtual void Seek(MediaHandler& aHandler, Time aTo) = 0;
    virtual void Pause(MediaHandler& aHandler) = 0;
    virtual void Resume(MediaHandler& aHandler) = 0;
    /// Ends the presentation and keeps the connection.
    virtual void Stop(MediaHandler& aHandler) = 0;
    /// Ends the presentation and the connection.
    virtual void Close(MediaHandler& aHandler) = 0;

    /// Takes in what has arrived. True when media of the track may be delivered.
    virtual bool Fill(UInt aTrack) = 0;
    /// Delivers what is queued. True when anything was.
    virtual bool Fetch(UInt aTrack) = 0;
    /// Both: takes in and delivers.
    virtual bool Produce(UInt aTrack) = 0;

    /// Reads what has arrived while playing and keeps it; delivers nothing. For an owner that will not ask for
    /// packets for a while: sockets hold little of a fast stream.
    virtual void TakeIn();
    /// What becomes readable when media of the track arrives: an owner that has got no packet may wait for that rather
    /// than ask again and again. -1 when waiting is of no use. The session may close it during any other operation.
    virtual SInt MediaDescriptor(UInt aTrack) const;
    /// Figures for tools; all zero for a track that is not there.
    virtual Reception TrackReception(UInt aTrack) const;
    /// Whether media that is not read waits at the server, as on the RTSP connection. Otherwise a socket holds little
    /// of a fast stream, and the rest is lost.
    virtual bool MediaWaits() const;
    /// Round trip of the control connection, to the server or a proxy, as the system measures it; 0 while it is
    /// unknown.
    virtual Time RoundTrip() const;
};

}  // namespace Player
