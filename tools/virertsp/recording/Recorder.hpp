#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Player/Pace.hpp"
#include "recording/Observer.hpp"
#include "recording/TrackRecord.hpp"

namespace Virertsp {

/// Takes what a player receives into files until it ends.
class Recorder {
public:
    struct Settings {
        /// Everything is dropped when this is no directory but a device such as /dev/null.
        std::string mDirectory;
        /// Play time to record; 0 for all there is.
        double mSeconds = 0;
        /// One line per sample with its play time in ns, in a file beside each track's.
        bool mTimes = false;
    };

    /// The player must be playing and outlives this. Throws `Failure` when no track can be written.
    Recorder(Player::MediaPlayer& aPlayer, const Settings& aSettings);

    /// Returns when all tracks have ended, enough is recorded, or the user or the observer wants it. Throws
    /// `Failure` and `Player::Exception`; what came until then is kept by `Finish`.
    void Run(Observer& aObserver);
    /// Completes the files. Throws `Failure`.
    void Finish();
    /// One line per track.
    std::string Summary() const;
    /// The first track that ended because nothing came any more, or a negative number.
    int SilentTrack() const;

private:
    using Clock = Observer::Clock;

    struct Track {
        Player::TrackIdx mIndex;
        TrackRecord mRecord;
        /// When its latest sample was taken out; nothing before the first.
        std::optional<Clock::time_point> mLastTaken = {};
    };

    /// False for a track that can't be written and is dropped.
    bool AddTrack(Player::TrackIdx aIndex, const Settings& aSettings);
    /// Takes samples of all tracks: those that are due, or all. True when there were some.
    bool DrainTracks(bool aAll, Clock::time_point aNow);
    bool Drain(Track& aTrack, bool aAll, Clock::time_point aNow);
    bool IsDue(const Track& aTrack) const;
    bool IsStill(const Track& aTrack, Clock::time_point aNow) const;
    bool IsEnough() const;
    bool IsOver(bool aTakenIn, Clock::time_point aNow);
    unsigned PacketsSinceLast();

    Player::MediaPlayer& mPlayer;
    std::vector<Track> mTracks;
    Player::Time mLimit;
    Player::Pace mPace;
    std::uint64_t mLastPackets = 0;
    /// When something last came in.
    Clock::time_point mLastTaken;
};

}  // namespace Virertsp
