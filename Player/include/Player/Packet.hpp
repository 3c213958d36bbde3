#pragma once

#include "Player/Buffer.hpp"
#include "Player/SharedObject.hpp"
#include "Player/Time.hpp"

namespace Player {

/// A run of bytes with a play time, on its way along a processor chain.
class Packet : public SharedObject {
public:
    explicit Packet(Time aPlayTime) : SharedObject(0), mPlayTime(aPlayTime) {}
    /// Copies the bytes.
    Packet(Time aPlayTime, const void* aData, UInt aSize)
        : SharedObject(0), mPlayTime(aPlayTime), mData(aData, aSize) {}

    /// The payload: what a consumer of this packet is meant to read.
    virtual const Byte* Begin() const { return mData.Begin(); }
    virtual const Byte* End() const { return mData.End(); }
    virtual UInt Size() const { return mData.Size(); }
    /// Whether a consumer under load may drop it without harm to what follows.
    virtual bool IsDisposable() const { return false; }

    /// Gives the payload away, as `Buffer::Detach` does: the packet is empty then. Null, and nothing changes, where the
    /// payload is but a small part of the memory that it lies in.
    Byte* Detach() {
        const bool lIsMost = Begin() == mData.Begin() && mData.Capacity() - Size() <= Size();
        return lIsMost ? mData.Detach() : nullptr;
    }

    /// Seconds on the presentation's time line.
    Time PlayTime() const { return mPlayTime; }
    void SetPlayTime(const Time& aTime) { mPlayTime = aTime; }

protected:
    Buffer& Data() { return mData; }
    const Buffer& Data() const { return mData; }

private:
    Time mPlayTime;
    Buffer mData;
};

namespace Packets {

/// A packet that carries media payload.
class Media : public Packet {
public:
    explicit Media(Time aPlayTime) : Packet(aPlayTime) {}
    Media(Time aPlayTime, const void* aData, UInt aSize) : Packet(aPlayTime, aData, aSize) {}
};

}  // namespace Packets
}  // namespace Player
