#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Player/Pace.hpp"
#include "recording/Cutter.hpp"
#include "recording/Intake.hpp"
#include "recording/Output.hpp"
#include "recording/TrackRecord.hpp"

namespace Virertsp {

/// Takes what a player receives into files until it ends.
class Recorder {
public:
    struct Settings {
        /// A directory with a file for each track, or one file for all of them (see `Container`). Everything is dropped
        /// when this is a device such as /dev/null.
        std::string mDirectory;
        /// Play time to record; 0 for all there is.
        double mSeconds = 0;
        /// One line per sample with its play time in ns, in a file beside each track's.
        bool mTimes = false;
        /// The number of the first part; from the second on it is in the names of its files.
        unsigned mPart = 1;
        /// Existing files are replaced instead of refused.
        bool mForce = false;
        /// The tracks to write, by number; all when empty.
        std::set<Player::TrackIdx> mChosen = {};
        /// When to go on in the files of the next part; their numbers have four digits.
        Split mSplit = {};
        /// With a limit: how long a track may be silent once another has reached it ...
        std::chrono::milliseconds mPatience{2000};
        /// ... and how long all may be silent together.
        std::chrono::milliseconds mLongestSilence{20000};
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
    /// What is wrong with the first track that did not bring what it should: a sentence, or nothing.
    std::string Complaint() const;
    /// The number of the latest part.
    unsigned Part() const { return mPart; }

private:
    using Clock = Observer::Clock;

    struct Track {
        TrackRecord mRecord;
        /// It goes into files.
        bool mWritten = false;
        /// It was silent while another track brought all that was asked for.
        bool mMissing = false;
    };

    /// False for a track that can't be written and is dropped.
    bool AddTrack(Player::TrackIdx aIndex);
    /// Lets the recording be cut as the settings want it.
    void Lead();
    void BeginPart(const Player::Time& aStart);
    bool IsChosen(Player::TrackIdx aIndex) const;
    void RunUntilOver(Observer& aObserver);
    void Take(Player::TrackIdx aTrack, const Intake::Sample& aSample);
    void TakeAll();
    void Write(Player::TrackIdx aTrack, const Intake::Sample& aSample);
    bool HasReachedLimit(Player::TrackIdx aTrack) const;
    bool IsEnough(Clock::time_point aNow);
    bool IsOver(bool aTakenIn, Clock::time_point aNow);
    /// What is wrong when media stopped coming before the presentation's described end.
    std::string EarlyEnd() const;
    unsigned PacketsSinceLast();
    Player::TrackIdx TrackCount() const { return static_cast<Player::TrackIdx>(mTracks.size()); }

    Player::MediaPlayer& mPlayer;
    /// The observer of the present run.
    Observer* mObserver = nullptr;
    Settings mSettings;
    Intake mIntake;
    Intake::Sink mSink;
    Output mOutput;
    unsigned mPart;
    std::optional<Cutter> mCutter;
    std::vector<Track> mTracks;
    Player::Time mLimit;
    Player::Pace mPace;
    std::uint64_t mLastPackets = 0;
    /// When something last came in.
    Clock::time_point mLastTaken;
};

}  // namespace Virertsp
