#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "Player/MediaPlayer.hpp"
#include "recording/Observer.hpp"

namespace Virertsp {

/// Takes samples out of a player, all tracks in turn, and holds back what an overtaken packet may still precede.
class Intake {
public:
    using Clock = Observer::Clock;
    using Sample = Player::SharedPtr<Player::Packet, Player::SharedObject>;
    using Sink = std::function<void(Player::TrackIdx aTrack, const Sample& aSample)>;

    /// The player must be playing and outlives this.
    explicit Intake(Player::MediaPlayer& aPlayer);

    /// Reads from the network and hands on the samples that are due. True when there were some. What the sink and the
    /// player throw passes through.
    bool Take(const Sink& aSink, Clock::time_point aNow);
    /// Hands on all that has been received, and reads no more.
    void TakeAll(const Sink& aSink, Clock::time_point aNow);

    /// Since when the track has brought nothing: since its latest sample, or since the beginning.
    Clock::time_point SilentSince(Player::TrackIdx aTrack) const;
    bool HasBrought(Player::TrackIdx aTrack) const { return mTracks[aTrack].mLastTaken.has_value(); }

private:
    struct Track {
        /// When its latest sample was taken out; nothing before the first.
        std::optional<Clock::time_point> mLastTaken = {};
    };

    /// At most one turn of the track; with `aAll`, whether they are due or not. True when there were some.
    bool TakeTrack(Player::TrackIdx aTrack, bool aAll, const Sink& aSink, Clock::time_point aNow);
    /// Requires that the track's queue has a sample.
    void HandOn(Player::TrackIdx aTrack, const Sink& aSink, Clock::time_point aNow);
    /// Fills the track's queue when it is empty and something is due. False when there is nothing.
    bool HasNext(Player::TrackIdx aTrack, bool aAll);
    bool IsDue(Player::TrackIdx aTrack) const;
    bool IsStill(Player::TrackIdx aTrack, Clock::time_point aNow) const;
    bool HasAnyBrought() const;

    Player::MediaPlayer& mPlayer;
    Clock::time_point mStart;
    std::vector<Track> mTracks;
};

}  // namespace Virertsp
