#pragma once

#include <cstddef>
#include <utility>

#include "Player/Ptr.hpp"

namespace Player::RTP {

/// What the stacks of a session hold together, in bytes. The limit ends a queue that is never emptied, as when a
/// sender's timestamps stand still and the target of buffering is never reached.
/// A track that holds little takes a little even then: one that is not read does not starve the others.
class Backlog : public SharedObject {
public:
    static constexpr std::size_t kLimit = std::size_t{1} << (sizeof(std::size_t) < 8 ? 28 : 30);

    explicit Backlog(std::size_t aLimit = kLimit) : SharedObject(0), mLimit(aLimit) {}

    void Add(std::size_t aBytes) { mHeld += aBytes; }
    void Remove(std::size_t aBytes) { mHeld -= aBytes; }

    /// No more is to be read. What was read already still fits, as a rule.
    bool Full() const { return mHeld >= mLimit - mLimit / kHeadroom; }
    /// Whether more is to be read for a track that holds that many bytes.
    bool Wants(std::size_t aOwn) const { return !Full() || aOwn < mLimit / kShare; }
    /// Whether a packet finds place that came for such a track.
    bool Takes(std::size_t aOwn) const { return mHeld < mLimit || aOwn < mLimit / kShare; }

    /// Reports the first packet that found no place.
    void ReportDrop();

private:
    /// A read brings 128 KiB at most, which this part of 64 MiB has place for.
    static constexpr std::size_t kHeadroom = 256;
    static constexpr std::size_t kShare = 256;

    std::size_t mLimit;
    std::size_t mHeld = 0;
    bool mHasReported = false;
};

/// What one stack adds to a backlog, for as long as it lives.
class BacklogShare {
public:
    BacklogShare() : BacklogShare(SharedPtr<Backlog, SharedObject>(new Backlog)) {}
    explicit BacklogShare(const SharedPtr<Backlog, SharedObject>& aBacklog) : mBacklog(aBacklog) {}
    BacklogShare(const BacklogShare& aOther) : mBacklog(aOther.mBacklog) { Add(aOther.mBytes); }
    BacklogShare& operator=(const BacklogShare& aOther) {
        BacklogShare lCopy(aOther);
        mBacklog.Swap(lCopy.mBacklog);
        std::swap(mBytes, lCopy.mBytes);
        return *this;
    }
    ~BacklogShare() { Clear(); }

    void Add(std::size_t aBytes) {
        mBytes += aBytes;
        mBacklog->Add(aBytes);
    }
    void Remove(std::size_t aBytes) {
        mBytes -= aBytes;
        mBacklog->Remove(aBytes);
    }
    void Clear() { Remove(mBytes); }

    bool Full() const { return mBacklog->Full(); }
    bool Wants() const { return mBacklog->Wants(mBytes); }
    bool Takes() const { return mBacklog->Takes(mBytes); }
    void ReportDrop() { mBacklog->ReportDrop(); }

private:
    SharedPtr<Backlog, SharedObject> mBacklog;
    std::size_t mBytes = 0;
};

}  // namespace Player::RTP
