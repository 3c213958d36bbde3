#pragma once

#include <vector>

#include "Player/MediaHandler.hpp"
#include "Player/MediaTrack.hpp"

namespace Player {

/// Plays a location and hands out its media, track by track.
///
///     Player::MediaPlayer lPlayer;
///     lPlayer.Play("rtsp://host/clip", Player::Time(0));
///     while (!lPlayer.IsEnded()) {
///         for (Player::TrackIdx lTrack = 0; lTrack < lPlayer.GetTrackCount(); ++lTrack) {
///             auto lSample = lPlayer.GetTrackPacket(lTrack);    // null: nothing there yet
///         }
///     }
///     lPlayer.Close();
///
/// Not locked: one thread at a time. Reading happens on the thread that asks for packets.
class MediaPlayer : public MediaHandler {
public:
    MediaPlayer() = default;

    void SelectTracks(const SharedPtr<Properties, SharedObject>& aSession,
                      std::list<SharedPtr<Properties, SharedObject>>& aTracks) override;
    SharedPtr<Processor, SharedObject> AcceptTrack(const SharedPtr<Properties, SharedObject>& aTrack) override;
    void AvailableRange(const Time& aBegin, const Time& aEnd) override;
    void PlayingRange(const Time& aBegin, const Time& aEnd) override;
    void Reset() override;

    void GetAvailableRange(Time& aBegin, Time& aEnd) const;
    void GetPlayingRange(Time& aBegin, Time& aEnd) const;
    /// 0 for a presentation without an end (a live one).
    Time GetAvailableDuration() const;
    Time GetPlayingDuration() const;

    /// Session level of the description; null before the first `Play`.
    SharedPtr<Properties, SharedObject> GetCommonInfo() const { return mCommon; }
    UInt GetTrackCount() const { return static_cast<UInt>(mTracks.size()); }
    /// Asserts that the track exists; all other operations here tolerate any index.
    SharedPtr<Properties, SharedObject> GetTrackInfo(TrackIdx aIdx) const;

    /// True for a track that is not there.
    bool HasTrackTimedOut(TrackIdx aIdx) const;
    bool IsTrackEnded(TrackIdx aIdx) const;
    /// All tracks; true when there are none.
    bool HasTimedOut() const;
    bool IsEnded() const;

    /// How much media of the track is known ahead of what was taken out; 0 for a track that is not there.
    Time TrackTimeAvailable(TrackIdx aIdx) const;
    Time TrackLatestTime(TrackIdx aIdx) const;

    /// Whether the track has a sample in its queue; nothing is read for it.
    bool IsTrackPacketQueued(TrackIdx aIdx) const { return Has(aIdx) && !mTracks[aIdx]->Empty(); }
    /// Whether the track has a sample, reading from the network if its queue is empty.
    bool TrackHasPacket(TrackIdx aIdx);
    /// The track's next sample, reading from the network if its queue is empty; null when there is none.
    SharedPtr<Packet, SharedObject> GetTrackPacket(TrackIdx aIdx);

    /// `MediaSession::MediaDescriptor`; -1 for a track that is not there.
    SInt MediaDescriptor(TrackIdx aIdx) const;
    /// `MediaSession::MediaWaits`; false without a session.
    bool MediaWaits() const { return Session() && Session()->MediaWaits(); }
    /// `MediaSession::RoundTrip`; 0 without a session.
    Time RoundTrip() const { return Session() ? Session()->RoundTrip() : Time(0); }
    /// Figures of the track's reception; all zero for a track that is not there.
    Reception GetTrackReception(TrackIdx aIdx) const;

private:
    bool Has(TrackIdx aIdx) const { return aIdx < mTracks.size(); }

    SharedPtr<Properties, SharedObject> mCommon;
    std::vector<SharedPtr<Consumers::MediaTrack, SharedObject>> mTracks;
    Time mAvailableBegin;
    Time mAvailableEnd;
    Time mPlayingBegin;
    Time mPlayingEnd;
};

}  // namespace Player
