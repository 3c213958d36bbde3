#pragma once

#include <vector>

#include "Player/Assert.hpp"
#include "Player/Ptr.hpp"
#include "RTP/Transport.hpp"
#include "RTP/Transports/Track.hpp"

namespace Player::RTP::Transports {

/// All that transports do alike: keeps the tracks, maps indices to them, and visits them all.
/// `TrackT` is a `Track`. The derived class decides how a track's packets come in.
template <typename TrackT>
class TrackTransport : public Transport {
public:
    void AttachTrack(TrackIdx aIdx, const SharedPtr<Processor, SharedObject>& aProcessor) override {
        At(aIdx).mProcessor = aProcessor;
    }
    Stack& ModifyTrackRTPStack(TrackIdx aIdx) override { return At(aIdx).mStack; }
    const Stack& GetTrackRTPStack(TrackIdx aIdx) const override { return At(aIdx).mStack; }

    void NotifyTrack(TrackIdx aIdx, const String& aKey, const String& aVal) override { At(aIdx).Notify(aKey, aVal); }
    void FlushTrack(TrackIdx aIdx) override { At(aIdx).Flush(Time::Now()); }
    bool FillTrack(TrackIdx aIdx) override { return TakeIn(At(aIdx)); }
    bool FillOrHaveTrack(TrackIdx aIdx) override { return TakeInOrHave(At(aIdx)); }
    bool FetchTrack(TrackIdx aIdx) override { return At(aIdx).Fetch(); }
    bool ProduceTrack(TrackIdx aIdx) override { return TakeInAndFetch(At(aIdx)); }

    void Notify(const String& aKey, const String& aVal) override {
        for (const auto& lTrack : All()) {
            lTrack->Notify(aKey, aVal);
        }
    }
    void Flush() override {
        const Time lNow = Time::Now();
        for (const auto& lTrack : All()) {
            lTrack->Flush(lNow);
        }
    }
    bool Fill() override {
        return AnyOfAll([this](TrackT& aTrack) { return TakeIn(aTrack); });
    }
    bool FillOrHave() override {
        return AnyOfAll([this](TrackT& aTrack) { return TakeInOrHave(aTrack); });
    }
    bool Fetch() override {
        return AnyOfAll([](TrackT& aTrack) { return aTrack.Fetch(); });
    }
    bool Produce() override {
        return AnyOfAll([this](TrackT& aTrack) { return TakeInAndFetch(aTrack); });
    }

    void LimitQueues(std::size_t aBytes) override { mBacklog.Set(new Backlog(aBytes)); }

protected:
    using Tracks = std::vector<ScopedPtr<TrackT>>;

    /// Takes in what has arrived for the track. True when it got media.
    virtual bool TakeIn(TrackT& aTrack) = 0;

    TrackIdx Add(const ScopedPtr<TrackT>& aTrack) {
        aTrack->mStack.SetBacklog(mBacklog);
        mTracks.push_back(aTrack);
        return static_cast<TrackIdx>(mTracks.size() - 1);
    }
    void RemoveAll() { mTracks.clear(); }

    TrackT& At(TrackIdx aIdx) const {
        PLAYER_ASSERT(aIdx < mTracks.size());
        return *mTracks[aIdx];
    }
    /// For operations that make no sense without a track.
    const Tracks& All() const {
        PLAYER_ASSERT(0 != mTracks.size());
        return mTracks;
    }
    /// Perhaps none.
    const Tracks& Held() const { return mTracks; }

    /// Takes a compound RTCP packet for the track and moves the other tracks onto its time line.
    /// Writes the receiver report that answers it; 0 when there is none to send.
    UInt AnswerRTCP(TrackT& aTrack, const Byte* aData, UInt aSize, Byte* aReport, UInt aReportSize) {
        if (!aTrack.mStack.HandleRTCP(aData, aSize, Time::Now())) { return 0; }
        for (const auto& lOther : mTracks) {
            lOther->mStack.Synchronize(aTrack.mStack);
        }
        return aTrack.mStack.AssembleRTCP_RR(aReport, aReportSize, Time::Now());
    }

private:
    bool TakeInOrHave(TrackT& aTrack) { return TakeIn(aTrack) || !aTrack.mStack.Empty(); }
    bool TakeInAndFetch(TrackT& aTrack) { return TakeInOrHave(aTrack) && aTrack.Fetch(); }

    /// Every track is visited, also after one that had something.
    template <typename Operation>
    bool AnyOfAll(Operation aOperation) {
        bool lAny = false;
        for (const auto& lTrack : All()) {
            lAny = aOperation(*lTrack) || lAny;
        }
        return lAny;
    }

    SharedPtr<Backlog, SharedObject> mBacklog{new Backlog};
    Tracks mTracks;
};

}  // namespace Player::RTP::Transports
