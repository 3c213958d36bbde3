#include "recording/Recorder.hpp"

#include <algorithm>
#include <thread>

#include "Diagnostics.hpp"
#include "Failure.hpp"
#include "Player/String.hpp"
#include "commands/Interrupt.hpp"
#include "recording/Progress.hpp"

namespace Virertsp {

namespace {

/// The end of a track may be known before its last packets are read: they get so much time.
constexpr std::chrono::milliseconds kLastWords(300);

/// The last samples of a presentation lie at most that many seconds before its described end.
constexpr Player::UInt kShortOfEnd = 1;

}  // namespace

Recorder::Recorder(Player::MediaPlayer& aPlayer, const Settings& aSettings)
    : mPlayer(aPlayer),
      mSettings(aSettings),
      mIntake(aPlayer),
      mSink([this](Player::TrackIdx aTrack, const Intake::Sample& aSample) { Take(aTrack, aSample); }),
      mOutput({aSettings.mDirectory, aSettings.mTimes, aSettings.mForce, aSettings.mSplit.IsWanted()}),
      mPart(aSettings.mPart),
      mLimit(Player::Time::Seconds(aSettings.mSeconds)),
      mLastTaken(Clock::now()) {
    mOutput.BeginFirst(mPart);
    for (const Player::TrackIdx lChosen : mSettings.mChosen) {
        if (lChosen < mPlayer.GetTrackCount()) { continue; }
        throw Failure(kExitNothingPlayable,
                      Player::StringWithFormat("There is no track %u that can be played.", lChosen));
    }
    unsigned lLeftOut = 0;
    for (Player::TrackIdx lTrack = 0; lTrack < mPlayer.GetTrackCount(); ++lTrack) {
        if (mOutput.Drops() || !IsChosen(lTrack)) {
            mTracks.push_back({TrackRecord(Output::Nowhere())});
        } else if (!AddTrack(lTrack)) {
            ++lLeftOut;
        }
    }
    if (lLeftOut == (mSettings.mChosen.empty() ? mTracks.size() : mSettings.mChosen.size())) {
        throw Failure(kExitNothingPlayable, "No track of the presentation can be written.");
    }
    if (mSettings.mSplit.IsWanted()) { Lead(); }
}

bool Recorder::AddTrack(Player::TrackIdx aIndex) {
    try {
        mTracks.push_back({TrackRecord(mOutput.Open(aIndex, *mPlayer.GetTrackInfo(aIndex))), true});
        return true;
    } catch (const Failure& lFailure) {
        if (kExitNothingPlayable != lFailure.Code()) { throw; }
        PrintWarning(Player::StringWithFormat("track %u is dropped: %s", aIndex, lFailure.what()));
    }
    // It plays all the same, and its samples would pile up in the player.
    mTracks.push_back({TrackRecord(Output::Nowhere())});
    return false;
}

void Recorder::Lead() {
    std::optional<Player::TrackIdx> lLeader;
    Coding lCoding = Coding::kSound;
    for (Player::TrackIdx lTrack = 0; lTrack < TrackCount(); ++lTrack) {
        if (!mTracks[lTrack].mWritten) { continue; }
        const Coding lThis = CodingOf(*mPlayer.GetTrackInfo(lTrack));
        // Pictures lead: sound can be cut anywhere.
        if (lLeader && (Coding::kSound != lCoding || Coding::kSound == lThis)) { continue; }
        lLeader = lTrack;
        lCoding = lThis;
    }
    if (!lLeader) { return; }
    mCutter.emplace(
        mSettings.mSplit, *lLeader, lCoding,
        [this](Player::TrackIdx aTrack, const Intake::Sample& aSample) { Write(aTrack, aSample); },
        [this, lTrack = *lLeader](const Player::Time& aAt) {
            if (!HasReachedLimit(lTrack)) { BeginPart(aAt); }
        });
}

void Recorder::BeginPart(const Player::Time& aStart) {
    mOutput.Begin(++mPart, aStart);
    for (Player::TrackIdx lTrack = 0; lTrack < TrackCount(); ++lTrack) {
        if (!mTracks[lTrack].mWritten) { continue; }
        mTracks[lTrack].mRecord.ContinueIn(mOutput.Open(lTrack, *mPlayer.GetTrackInfo(lTrack)), aStart);
    }
}

bool Recorder::IsChosen(Player::TrackIdx aIndex) const {
    return mSettings.mChosen.empty() || 0 != mSettings.mChosen.count(aIndex);
}

void Recorder::Run(Observer& aObserver) {
    mObserver = &aObserver;
    try {
        RunUntilOver(aObserver);
    } catch (const Player::Exception&) {
        TakeAll();
        throw;
    }
    TakeAll();
}

void Recorder::RunUntilOver(Observer& aObserver) {
    // Until media comes the session may still ask the server for another transport; there is nothing to lose yet.
    std::optional<ImpatientWait> lWait(std::in_place, kExitOk);
    while (!Interrupted()) {
        const Clock::time_point lNow = Clock::now();
        const bool lTaken = mIntake.Take(mSink, lNow);
        if (lTaken) { lWait.reset(); }
        if (IsEnough(lNow) || IsOver(lTaken, lNow) || !aObserver.Update(mPlayer, lNow)) { return; }
        std::this_thread::sleep_for(mPace.Next(PacketsSinceLast(), mPlayer.MediaWaits()));
    }
}

void Recorder::TakeAll() {
    mIntake.TakeAll(mSink, Clock::now());
    if (mCutter) { mCutter->Flush(); }
}

void Recorder::Take(Player::TrackIdx aTrack, const Intake::Sample& aSample) {
    mObserver->Sample(mPlayer, aTrack, *aSample);
    if (mCutter && mTracks[aTrack].mWritten) { return mCutter->Take(aTrack, aSample); }
    Write(aTrack, aSample);
}

void Recorder::Write(Player::TrackIdx aTrack, const Intake::Sample& aSample) {
    if (!HasReachedLimit(aTrack)) { mTracks[aTrack].mRecord.Write(*aSample); }
}

bool Recorder::HasReachedLimit(Player::TrackIdx aTrack) const {
    return Player::Time(0) != mLimit && mTracks[aTrack].mRecord.Length() >= mLimit;
}

bool Recorder::IsEnough(Clock::time_point aNow) {
    if (Player::Time(0) == mLimit) { return false; }
    bool lReached = false;
    Clock::time_point lLatest{};
    for (Player::TrackIdx lTrack = 0; lTrack < TrackCount(); ++lTrack) {
        lReached = HasReachedLimit(lTrack) || lReached;
        lLatest = std::max(lLatest, mIntake.SilentSince(lTrack));
    }
    if (!lReached && aNow - lLatest < mSettings.mLongestSilence) { return false; }
    std::vector<Player::TrackIdx> lMissing;
    for (Player::TrackIdx lTrack = 0; lTrack < TrackCount(); ++lTrack) {
        if (HasReachedLimit(lTrack) || mPlayer.IsTrackEnded(lTrack) || !IsChosen(lTrack)) { continue; }
        if (aNow - mIntake.SilentSince(lTrack) < mSettings.mPatience) { return false; }
        lMissing.push_back(lTrack);
    }
    for (const Player::TrackIdx lTrack : lMissing) {
        mTracks[lTrack].mMissing = true;
    }
    return true;
}

bool Recorder::IsOver(bool aTakenIn, Clock::time_point aNow) {
    if (aTakenIn || !mPlayer.IsEnded()) { mLastTaken = aNow; }
    return aNow - mLastTaken >= kLastWords;
}

unsigned Recorder::PacketsSinceLast() {
    // Frames within a connection may be as large as dozens of datagrams.
    constexpr std::uint64_t kFullSize = 1400;
    const Totals lTotals = Totals::Of(mPlayer);
    const std::uint64_t lPackets = std::max<std::uint64_t>(lTotals.mPackets, lTotals.mBytes / kFullSize);
    const std::uint64_t lMore = lPackets > mLastPackets ? lPackets - mLastPackets : 0;
    mLastPackets = lPackets;
    return static_cast<unsigned>(lMore);
}

void Recorder::Finish() {
    for (Track& lTrack : mTracks) {
        lTrack.mRecord.Finish();
    }
}

std::string Recorder::Summary() const {
    std::string lText;
    for (Player::TrackIdx lTrack = 0; lTrack < TrackCount(); ++lTrack) {
        lText += Player::StringWithFormat("track %u: ", lTrack) + mPlayer.GetTrackInfo(lTrack)->Get("Format") + ", " +
                 mTracks[lTrack].mRecord.Summary(mPlayer.GetTrackReception(lTrack)) + "\n";
    }
    return lText;
}

std::string Recorder::Complaint() const {
    for (Player::TrackIdx lTrack = 0; lTrack < TrackCount(); ++lTrack) {
        if (mPlayer.HasTrackTimedOut(lTrack) || mTracks[lTrack].mMissing) {
            return mIntake.HasBrought(lTrack) ? Player::StringWithFormat("Media of track %u stopped coming.", lTrack)
                                              : Player::StringWithFormat("No media of track %u came.", lTrack);
        }
    }
    return EarlyEnd();
}

std::string Recorder::EarlyEnd() const {
    Player::Time lBegin;
    Player::Time lEnd;
    mPlayer.GetPlayingRange(lBegin, lEnd);
    if (!(lEnd > lBegin)) { mPlayer.GetAvailableRange(lBegin, lEnd); }
    Player::Time lLatest;
    for (Player::TrackIdx lTrack = 0; lTrack < TrackCount(); ++lTrack) {
        // The clock alone ends a track, too: media may have stopped before.
        if (Player::Reception::End::kEndTime != mPlayer.GetTrackReception(lTrack).mEnd) { return std::string(); }
        lLatest = std::max(lLatest, mTracks[lTrack].mRecord.Latest());
    }
    if (lLatest + Player::Time(kShortOfEnd, 1) >= lEnd) { return std::string(); }
    return "Media stopped coming at " + FormatTime(lLatest) + ", before the described end at " + FormatTime(lEnd) + ".";
}

}  // namespace Virertsp
