#include "Player/MediaPlayer.hpp"

#include <algorithm>

#include "Player/Report.hpp"

namespace Player {

namespace {

Time Duration(const Time& aBegin, const Time& aEnd) {
    return aBegin < aEnd ? aEnd - aBegin : Time(0);
}

void ReportProperties(const Properties& aProperties) {
    for (auto lEntry = aProperties.Begin(); lEntry != aProperties.End(); ++lEntry) {
        Report(__FILE__, __LINE__, Severity::Debug, "    %s = %s", lEntry->Key().c_str(), lEntry->Val().c_str());
    }
}

}  // namespace

void MediaPlayer::SelectTracks(const SharedPtr<Properties, SharedObject>& aSession,
                               std::list<SharedPtr<Properties, SharedObject>>& aTracks) {
    Report(__FILE__, __LINE__, Severity::Debug, "Common:");
    ReportProperties(*aSession);
    UInt lTrack = 0;
    for (const auto& lProperties : aTracks) {
        Report(__FILE__, __LINE__, Severity::Debug, "Track %u:", lTrack++);
        ReportProperties(*lProperties);
    }
    mCommon = aSession;
}

SharedPtr<Processor, SharedObject> MediaPlayer::AcceptTrack(const SharedPtr<Properties, SharedObject>& aTrack) {
    if (!aTrack->Is("Transport", "Sample")) { return SharedPtr<Processor, SharedObject>(); }
    const SharedPtr<Consumers::MediaTrack, SharedObject> lTrack(new Consumers::MediaTrack(aTrack));
    mTracks.push_back(lTrack);
    return lTrack;
}

void MediaPlayer::AvailableRange(const Time& aBegin, const Time& aEnd) {
    mAvailableBegin = aBegin;
    mAvailableEnd = aEnd;
}

void MediaPlayer::PlayingRange(const Time& aBegin, const Time& aEnd) {
    mPlayingBegin = aBegin;
    mPlayingEnd = aEnd;
}

void MediaPlayer::Reset() {
    mCommon.Set(nullptr);
    mTracks.clear();
}

void MediaPlayer::GetAvailableRange(Time& aBegin, Time& aEnd) const {
    aBegin = mAvailableBegin;
    aEnd = mAvailableEnd;
}

void MediaPlayer::GetPlayingRange(Time& aBegin, Time& aEnd) const {
    aBegin = mPlayingBegin;
    aEnd = mPlayingEnd;
}

Time MediaPlayer::GetAvailableDuration() const {
    return Duration(mAvailableBegin, mAvailableEnd);
}

Time MediaPlayer::GetPlayingDuration() const {
    return Duration(mPlayingBegin, mPlayingEnd);
}

SharedPtr<Properties, SharedObject> MediaPlayer::GetTrackInfo(TrackIdx aIdx) const {
    PLAYER_ASSERT(aIdx < mTracks.size());
    return mTracks[aIdx]->Info();
}

bool MediaPlayer::HasTrackTimedOut(TrackIdx aIdx) const {
    return !Has(aIdx) || mTracks[aIdx]->TimedOut();
}

bool MediaPlayer::IsTrackEnded(TrackIdx aIdx) const {
    return !Has(aIdx) || mTracks[aIdx]->Ended();
}

bool MediaPlayer::HasTimedOut() const {
    return std::all_of(mTracks.begin(), mTracks.end(), [](const auto& aTrack) { return aTrack->TimedOut(); });
}

bool MediaPlayer::IsEnded() const {
    return std::all_of(mTracks.begin(), mTracks.end(), [](const auto& aTrack) { return aTrack->Ended(); });
}

Time MediaPlayer::TrackTimeAvailable(TrackIdx aIdx) const {
    return Has(aIdx) ? mTracks[aIdx]->TimeAvailable() : Time(0);
}

Time MediaPlayer::TrackLatestTime(TrackIdx aIdx) const {
    return Has(aIdx) ? mTracks[aIdx]->LatestTime() : Time(0);
}

bool MediaPlayer::TrackHasPacket(TrackIdx aIdx) {
    if (!Has(aIdx)) { return false; }
    if (mTracks[aIdx]->Empty()) { Produce(aIdx); }
    return Has(aIdx) && !mTracks[aIdx]->Empty();
}

SharedPtr<Packet, SharedObject> MediaPlayer::GetTrackPacket(TrackIdx aIdx) {
    return TrackHasPacket(aIdx) ? mTracks[aIdx]->Pop() : SharedPtr<Packet, SharedObject>();
}

SInt MediaPlayer::MediaDescriptor(TrackIdx aIdx) const {
    return Has(aIdx) && Session() ? Session()->MediaDescriptor(aIdx) : -1;
}

Reception MediaPlayer::GetTrackReception(TrackIdx aIdx) const {
    return Has(aIdx) && Session() ? Session()->TrackReception(aIdx) : Reception();
}

}  // namespace Player
