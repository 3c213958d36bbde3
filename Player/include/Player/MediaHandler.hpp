#pragma once

#include <list>
#include <string>

#include "Player/MediaSession.hpp"
#include "Player/Processor.hpp"
#include "Player/Properties.hpp"

namespace Player {

/// The owner of a session: makes it, configures it, drives it, and is called back by it.
/// Every operation but `Play` and `SetConfigParam` throws `SystemErr` `kNoSession` while there is no session;
/// what the session throws passes through.
class MediaHandler : public SharedObject {
public:
    MediaHandler();
    ~MediaHandler() override;

    /// Plays `aURL` from `aStart`, making the session on first use and reusing it afterwards.
    void Play(const std::string& aURL, Time aStart);
    /// Stores a setting ("RTSP:..."); a session that exists reads it at once.
    void SetConfigParam(const std::string& aKey, const std::string& aVal);

    bool Produce(UInt aTrack);
    bool Fetch(UInt aTrack);
    bool Fill(UInt aTrack);
    /// Keeps sockets from overflowing while no packets are asked for.
    void TakeIn();
    void Seek(Time aTo);
    void Pause();
    void Resume();
    void Stop();
    void Close();

    /// Called by the session: what the server describes; tracks taken off the list are not offered.
    virtual void SelectTracks(const SharedPtr<Properties, SharedObject>& aSession,
                              std::list<SharedPtr<Properties, SharedObject>>& aTracks) = 0;
    /// Called by the session for each playable track: the consumer at the chain's end, or null to refuse.
    virtual SharedPtr<Processor, SharedObject> AcceptTrack(const SharedPtr<Properties, SharedObject>& aTrack) = 0;
    /// Called by the session: what the description says can be played.
    virtual void AvailableRange(const Time& aBegin, const Time& aEnd) = 0;
    /// Called by the session: what the server says it plays.
    virtual void PlayingRange(const Time& aBegin, const Time& aEnd) = 0;
    /// Called by the session: the tracks accepted so far are discarded.
    virtual void Reset() = 0;

    /// Called by the session as it sends a request within one of the operations above. Does nothing by default.
    virtual void RequestSent(const std::string& aMethod, const std::string& aURL);
    /// Called by the session for each final response, in the order of the requests. `aStatus` is the number that a
    /// refusal is thrown with (0x404), 0 when the connection ended instead; `aServer` what the server calls itself,
    /// if it says so. Does nothing by default.
    virtual void ResponseReceived(UInt aStatus, const std::string& aReason, const std::string& aServer);

    /// Installs a session other than the built-in one.
    void SetSession(const SharedPtr<MediaSession, SharedObject>& aSession) { mSession = aSession; }

protected:
    /// Null until the first `Play`.
    const SharedPtr<MediaSession, SharedObject>& Session() const { return mSession; }

private:
    /// The session; reports and throws for the operation of that name when there is none.
    MediaSession& SessionFor(const char* aOperation) const;

    SharedPtr<Properties, SharedObject> mConfig;
    SharedPtr<MediaSession, SharedObject> mSession;
};

}  // namespace Player
