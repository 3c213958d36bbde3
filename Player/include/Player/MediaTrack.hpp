#pragma once

#include <deque>

#include "Player/Consumer.hpp"
#include "Player/Properties.hpp"

namespace Player::Consumers {

/// The queue of one track's finished samples, first in first out.
class MediaTrack : public Consumer {
public:
    /// `aInfo`: the description of the track.
    explicit MediaTrack(const SharedPtr<Properties, SharedObject>& aInfo) : mInfo(aInfo) {}

    /// "EndOfStream" ends the track; with the value "Timeout" because no data came.
    void Param(const String& aKey, const String& aVal) override;
    /// Queues the packet. Always false: one pumping call delivers one finished sample at most.
    bool Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) override;
    /// Empties the queue and starts anew, but a track that timed out stays marked so.
    void Flush() override;

    /// Takes the oldest packet out; null when there is none.
    SharedPtr<Packet, SharedObject> Pop();

    bool Empty() const { return mPackets.empty(); }
    bool Ended() const { return mEnded; }
    bool TimedOut() const { return mTimedOut; }
    Time LatestTime() const { return mLatestTime; }
    /// How much media lies ahead of what was taken out.
    Time TimeAvailable() const { return mLatestTime - mPoppedTime; }
    const SharedPtr<Properties, SharedObject>& Info() const { return mInfo; }

private:
    SharedPtr<Properties, SharedObject> mInfo;
    std::deque<SharedPtr<Packet, SharedObject>> mPackets;
    Time mPoppedTime;
    Time mLatestTime;
    bool mEnded = false;
    bool mTimedOut = false;
};

}  // namespace Player::Consumers
