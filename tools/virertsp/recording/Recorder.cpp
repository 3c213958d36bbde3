#include "recording/Recorder.hpp"

#include <sys/stat.h>

#include <thread>

#include "Failure.hpp"
#include "Player/String.hpp"
#include "commands/Interrupt.hpp"
#include "recording/Progress.hpp"

namespace Virertsp {

namespace {

/// The end of a track may be known before its last packets are read: they get so much time.
constexpr std::chrono::milliseconds kLastWords(300);
/// Packets that were overtaken find their place in so many seconds of media that are not taken out yet ...
constexpr Player::UInt kHeld = 1;
/// ... as long as more comes: when nothing was due for this time, all is taken.
constexpr std::chrono::milliseconds kPatience(500);
/// After so many samples of one track the others get their turn.
constexpr unsigned kMaxTurn = 256;

bool IsDevice(const std::string& aPath) {
    struct stat lStatus = {};
    return 0 == stat(aPath.c_str(), &lStatus) && S_ISCHR(lStatus.st_mode);
}

}  // namespace

Recorder::Recorder(Player::MediaPlayer& aPlayer, const Settings& aSettings)
    : mPlayer(aPlayer), mLimit(static_cast<long long>(aSettings.mSeconds * 4294967296.0)), mLastTaken(Clock::now()) {
    const bool lDrop = IsDevice(aSettings.mDirectory);
    if (!lDrop) { MakeDirectory(aSettings.mDirectory); }
    unsigned lLeftOut = 0;
    for (Player::TrackIdx lTrack = 0; lTrack < mPlayer.GetTrackCount(); ++lTrack) {
        if (lDrop) {
            mTracks.push_back({lTrack, TrackRecord(MakeNullWriter(), nullptr)});
        } else if (!AddTrack(lTrack, aSettings)) {
            ++lLeftOut;
        }
    }
    if (mTracks.size() == lLeftOut) {
        throw Failure(kExitNothingPlayable, "No track of the presentation can be written.");
    }
}

bool Recorder::AddTrack(Player::TrackIdx aIndex, const Settings& aSettings) {
    const std::string lBase = aSettings.mDirectory + Player::StringWithFormat("/track%u", aIndex);
    try {
        auto lWriter = MakeWriter(*mPlayer.GetTrackInfo(aIndex), lBase);
        auto lTimes = aSettings.mTimes ? std::make_unique<OutputFile>(lBase + ".times") : nullptr;
        mTracks.push_back({aIndex, TrackRecord(std::move(lWriter), std::move(lTimes))});
        return true;
    } catch (const Failure& lFailure) {
        if (kExitNothingPlayable != lFailure.Code()) { throw; }
        std::fprintf(stderr, "virertsp: track %u is dropped: %s\n", aIndex, lFailure.what());
    }
    // It plays all the same, and what nobody takes out would pile up.
    mTracks.push_back({aIndex, TrackRecord(MakeNullWriter(), nullptr)});
    return false;
}

void Recorder::Run(Observer& aObserver) {
    for (;;) {
        const bool lInterrupted = Interrupted();
        const Clock::time_point lNow = Clock::now();
        const bool lTaken = DrainTracks(lInterrupted, lNow);
        if (lInterrupted || IsEnough() || IsOver(lTaken, lNow)) { return; }
        if (!aObserver.Update(mPlayer, lNow)) { return; }
        std::this_thread::sleep_for(mPace.Next(PacketsSinceLast()));
    }
}

bool Recorder::DrainTracks(bool aAll, Clock::time_point aNow) {
    mPlayer.TakeIn();
    bool lTaken = false;
    for (Track& lTrack : mTracks) {
        lTaken = Drain(lTrack, aAll || IsStill(lTrack, aNow), aNow) || lTaken;
    }
    return lTaken;
}

bool Recorder::Drain(Track& aTrack, bool aAll, Clock::time_point aNow) {
    unsigned lSamples = 0;
    while (lSamples < kMaxTurn && (aAll || IsDue(aTrack))) {
        const auto lSample = mPlayer.GetTrackPacket(aTrack.mIndex);
        if (!lSample) { break; }
        aTrack.mRecord.Write(*lSample);
        aTrack.mLastTaken = aNow;
        ++lSamples;
        // Brings the next sample out of what was received already: the network is asked only when that is used up.
        mPlayer.Fetch(aTrack.mIndex);
    }
    return 0 != lSamples;
}

bool Recorder::IsDue(const Track& aTrack) const {
    // The first has to be asked for: that is what makes the player gather media and then play.
    if (!aTrack.mLastTaken) { return true; }
    return mPlayer.GetTrackReception(aTrack.mIndex).mBufferedTime > Player::Time(kHeld, 1);
}

bool Recorder::IsStill(const Track& aTrack, Clock::time_point aNow) const {
    return mPlayer.IsTrackEnded(aTrack.mIndex) || (aTrack.mLastTaken && aNow - *aTrack.mLastTaken >= kPatience);
}

bool Recorder::IsEnough() const {
    if (Player::Time(0) == mLimit) { return false; }
    for (const Track& lTrack : mTracks) {
        if (!(lTrack.mRecord.Length() >= mLimit) && !mPlayer.IsTrackEnded(lTrack.mIndex)) { return false; }
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
    for (const Track& lTrack : mTracks) {
        lText += Player::StringWithFormat("track %u: ", lTrack.mIndex) +
                 mPlayer.GetTrackInfo(lTrack.mIndex)->Get("Format") + ", " +
                 lTrack.mRecord.Summary(mPlayer.GetTrackReception(lTrack.mIndex)) + "\n";
    }
    return lText;
}

int Recorder::SilentTrack() const {
    for (const Track& lTrack : mTracks) {
        if (mPlayer.HasTrackTimedOut(lTrack.mIndex)) { return static_cast<int>(lTrack.mIndex); }
    }
    return -1;
}

}  // namespace Virertsp
