#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "Player/MediaTrack.hpp"
#include "recording/Intake.hpp"
#include "recording/Split.hpp"
#include "writers/RandomAccess.hpp"

namespace Virertsp {

/// Finds where a recording is cut: at a random access point of one track, which leads the others. They are held back
/// until the leader has come as far as they are, so that each of their samples is known to lie before a cut or after.
class Cutter {
public:
    using Sample = Intake::Sample;
    using Sink = Intake::Sink;
    /// Called in front of the leader's sample that begins a part, with its play time.
    using Cut = std::function<void(const Player::Time& aAt)>;

    Cutter(const Split& aSplit, Player::TrackIdx aLeader, Coding aCoding, Sink aSink, Cut aCut);

    void Take(Player::TrackIdx aTrack, const Sample& aSample);
    /// Hands on what is held back.
    void Flush();

private:
    void TakeLeader(const Sample& aSample);
    bool IsDue(const Sample& aSample) const;
    void HandOn(Player::TrackIdx aTrack, const Sample& aSample);
    /// Hands on what may go of a track.
    void Release(Player::TrackIdx aTrack, bool aAll);

    Split mSplit;
    Player::TrackIdx mLeader;
    Coding mCoding;
    Sink mSink;
    Cut mCut;
    /// By track; the leader's is empty.
    std::vector<std::deque<Sample>> mHeld;
    /// Of the leader: where the part begins, and the latest play time of all.
    std::optional<Player::Time> mStart;
    Player::Time mLatest;
    /// Bytes in the part.
    std::uint64_t mBytes = 0;
};

}  // namespace Virertsp
