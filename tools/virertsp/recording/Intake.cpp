#include "recording/Intake.hpp"

#include <algorithm>

namespace Virertsp {

namespace {

/// Packets that were overtaken find their place in that many seconds of media that are not taken out yet ...
constexpr Player::UInt kHeld = 1;
/// ... as long as more comes: when nothing was due for this time, all is taken.
constexpr std::chrono::milliseconds kPatience(500);
/// After that many samples of one track the others get their turn.
constexpr unsigned kMaxTurn = 256;

}  // namespace

Intake::Intake(Player::MediaPlayer& aPlayer)
    : mPlayer(aPlayer), mStart(Clock::now()), mTracks(mPlayer.GetTrackCount()) {}

bool Intake::Take(const Sink& aSink, Clock::time_point aNow) {
    mPlayer.TakeIn();
    bool lTaken = false;
    for (Player::TrackIdx lTrack = 0; lTrack < mTracks.size(); ++lTrack) {
        // Any track that has gathered enough media lets all of them play: the first may be the silent one.
        if (!HasAnyBrought()) { mPlayer.Fill(lTrack); }
        lTaken = TakeTrack(lTrack, IsStill(lTrack, aNow), aSink, aNow) || lTaken;
    }
    return lTaken;
}

void Intake::TakeAll(const Sink& aSink, Clock::time_point aNow) {
    // What is still being gathered for a smooth start comes out as well.
    if (!HasAnyBrought()) { mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", "0"); }
    for (Player::TrackIdx lTrack = 0; lTrack < mTracks.size(); ++lTrack) {
        if (!HasBrought(lTrack)) { mPlayer.Fill(lTrack); }
        for (bool lMore = true; lMore;) {
            while (mPlayer.IsTrackPacketQueued(lTrack)) {
                HandOn(lTrack, aSink, aNow);
            }
            lMore = mPlayer.Fetch(lTrack) || mPlayer.IsTrackPacketQueued(lTrack);
        }
    }
}

bool Intake::TakeTrack(Player::TrackIdx aTrack, bool aAll, const Sink& aSink, Clock::time_point aNow) {
    unsigned lSamples = 0;
    for (; lSamples < kMaxTurn && HasNext(aTrack, aAll); ++lSamples) {
        HandOn(aTrack, aSink, aNow);
    }
    return 0 != lSamples;
}

void Intake::HandOn(Player::TrackIdx aTrack, const Sink& aSink, Clock::time_point aNow) {
    const Sample lSample = mPlayer.GetTrackPacket(aTrack);
    mTracks[aTrack].mLastTaken = aNow;
    aSink(aTrack, lSample);
}

bool Intake::HasNext(Player::TrackIdx aTrack, bool aAll) {
    // One packet may have brought several samples: the next is fetched when all of them are taken.
    if (mPlayer.IsTrackPacketQueued(aTrack)) { return true; }
    if (!aAll && !IsDue(aTrack)) { return false; }
    // Out of what was received already: the network is asked only when that is used up.
    mPlayer.Fetch(aTrack);
    return mPlayer.TrackHasPacket(aTrack);
}

bool Intake::IsDue(Player::TrackIdx aTrack) const {
    // The first has to be asked for: that is what makes the player gather media and then play.
    if (!HasBrought(aTrack)) { return true; }
    return mPlayer.GetTrackReception(aTrack).mBufferedTime > Player::Time(kHeld, 1);
}

bool Intake::IsStill(Player::TrackIdx aTrack, Clock::time_point aNow) const {
    return mPlayer.IsTrackEnded(aTrack) || (HasBrought(aTrack) && aNow - SilentSince(aTrack) >= kPatience);
}

Intake::Clock::time_point Intake::SilentSince(Player::TrackIdx aTrack) const {
    return mTracks[aTrack].mLastTaken.value_or(mStart);
}

bool Intake::HasAnyBrought() const {
    return std::any_of(mTracks.begin(), mTracks.end(), [](const Track& aTrack) { return aTrack.mLastTaken; });
}

}  // namespace Virertsp
