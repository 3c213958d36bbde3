#include "recording/Recorder.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <thread>

#include "Failure.hpp"
#include "Player/String.hpp"
#include "commands/Interrupt.hpp"
#include "recording/Progress.hpp"

namespace Virertsp {

namespace {

/// The end of a track may be known before its last packets are read: they get so much time.
constexpr std::chrono::milliseconds kLastWords(300);

/// The last samples of a presentation lie so many seconds before its described end at most.
constexpr Player::UInt kShortOfEnd = 1;

bool IsDevice(const std::string& aPath) {
    struct stat lStatus = {};
    return 0 == stat(aPath.c_str(), &lStatus) && S_ISCHR(lStatus.st_mode);
}

}  // namespace

Recorder::Recorder(Player::MediaPlayer& aPlayer, const Settings& aSettings)
    : mPlayer(aPlayer),
      mSettings(aSettings),
      mIntake(aPlayer),
      mSink([this](Player::TrackIdx aTrack, const Intake::Sample& aSample) { Take(aTrack, aSample); }),
      mLimit(static_cast<long long>(aSettings.mSeconds * 4294967296.0)),
      mLastTaken(Clock::now()) {
    const bool lDrop = IsDevice(aSettings.mDirectory);
    if (Container::IsFor(aSettings.mDirectory)) {
        mContainerPath = mSettings.mDirectory;
        mContainerPath.insert(mContainerPath.size() - 4, PartSuffix());
        mContainer = Container::Make(mContainerPath, Existing());
    } else if (!lDrop) {
        MakeDirectory(aSettings.mDirectory);
    }
    for (const Player::TrackIdx lChosen : mSettings.mChosen) {
        if (lChosen < mPlayer.GetTrackCount()) { continue; }
        throw Failure(kExitNothingPlayable,
                      Player::StringWithFormat("There is no track %u that can be played.", lChosen));
    }
    unsigned lLeftOut = 0;
    for (Player::TrackIdx lTrack = 0; lTrack < mPlayer.GetTrackCount(); ++lTrack) {
        if (lDrop || !IsChosen(lTrack)) {
            mTracks.push_back({TrackRecord(MakeNullWriter(), nullptr)});
        } else if (!AddTrack(lTrack)) {
            ++lLeftOut;
        }
    }
    if (lLeftOut == (mSettings.mChosen.empty() ? mTracks.size() : mSettings.mChosen.size())) {
        throw Failure(kExitNothingPlayable, "No track of the presentation can be written.");
    }
}

bool Recorder::AddTrack(Player::TrackIdx aIndex) {
    const std::string lBase = mContainer
                                  ? mContainerPath + Player::StringWithFormat(".track%u", aIndex)
                                  : mSettings.mDirectory + Player::StringWithFormat("/track%u", aIndex) + PartSuffix();
    try {
        const Player::Properties& lInfo = *mPlayer.GetTrackInfo(aIndex);
        auto lWriter = mContainer ? mContainer->AddTrack(lInfo) : MakeWriter(lInfo, lBase, Existing());
        auto lTimes = mSettings.mTimes ? std::make_unique<OutputFile>(lBase + ".times", Existing()) : nullptr;
        mTracks.push_back({TrackRecord(std::move(lWriter), std::move(lTimes))});
        return true;
    } catch (const Failure& lFailure) {
        if (kExitNothingPlayable != lFailure.Code()) { throw; }
        std::fprintf(stderr, "virertsp: track %u is dropped: %s\n", aIndex, lFailure.what());
    }
    // It plays all the same, and its samples would pile up in the player.
    mTracks.push_back({TrackRecord(MakeNullWriter(), nullptr)});
    return false;
}

OutputFile::Existing Recorder::Existing() const {
    return mSettings.mForce ? OutputFile::Existing::kReplace : OutputFile::Existing::kKeep;
}

std::string Recorder::PartSuffix() const {
    return 1 == mSettings.mPart ? std::string() : Player::StringWithFormat("-%u", mSettings.mPart);
}

bool Recorder::IsChosen(Player::TrackIdx aIndex) const {
    return mSettings.mChosen.empty() || 0 != mSettings.mChosen.count(aIndex);
}

void Recorder::Run(Observer& aObserver) {
    try {
        RunUntilOver(aObserver);
    } catch (const Player::Exception&) {
        mIntake.TakeAll(mSink, Clock::now());
        throw;
    }
    mIntake.TakeAll(mSink, Clock::now());
}

void Recorder::RunUntilOver(Observer& aObserver) {
    // Until media comes the session may still ask the server for another transport; there is nothing to lose yet.
    std::optional<ImpatientWait> lWait(std::in_place, kExitOk);
    while (!Interrupted()) {
        const Clock::time_point lNow = Clock::now();
        const bool lTaken = mIntake.Take(mSink, lNow);
        if (lTaken) { lWait.reset(); }
        if (IsEnough(lNow) || IsOver(lTaken, lNow) || !aObserver.Update(mPlayer, lNow)) { return; }
        std::this_thread::sleep_for(mPace.Next(PacketsSinceLast()));
    }
}

void Recorder::Take(Player::TrackIdx aTrack, const Intake::Sample& aSample) {
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
    const std::uint64_t lPackets = Totals::Of(mPlayer).mPackets;
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
