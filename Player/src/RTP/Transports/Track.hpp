#pragma once

#include "Player/Processor.hpp"
#include "Player/Ptr.hpp"
#include "RTP/Stack.hpp"

namespace Player::RTP::Transports {

/// What every transport holds for a track: its reception and the head of its processor chain.
/// Before a processor is attached packets stay queued and notices go nowhere.
struct Track {
    SharedPtr<Processor, SharedObject> mProcessor;
    Stack mStack;
    /// The chain knows that the track has ended; it learns that once per play.
    bool mEndNotified = false;

    /// Whether more is to be read for it. While nothing is, its time-out does not run.
    bool WantsMore(Time aNow);
    void Notify(const String& aKey, const String& aVal);
    /// Drops what is held, here and down the chain.
    void Flush(Time aNow);
    /// Hands queued packets to the chain until it refuses more. True when any went.
    bool Fetch();
    /// Passes on why the track has ended, once nothing is queued. True when it did so now.
    bool NotifyEnd(Time aNow);
};

}  // namespace Player::RTP::Transports
