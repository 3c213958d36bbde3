#pragma once

#include "Player/Packet.hpp"

namespace Player::Packets {

/// One access unit of an "mpeg4-generic" stream.
class MPEG4GenericSample : public Media {
public:
    /// Copies the bytes. `aAUIndex` is the serial number that the sender gave, modulo its field's width.
    MPEG4GenericSample(Time aPlayTime, const void* aData, UInt aSize, UInt aAUIndex, bool aIsRandomAccessPoint)
        : Media(aPlayTime, aData, aSize), mAUIndex(aAUIndex), mIsRandomAccessPoint(aIsRandomAccessPoint) {}

    /// Adds a further fragment.
    void Append(const void* aData, UInt aSize) { Data().Append(aData, aSize); }

    UInt AUIndex() const { return mAUIndex; }
    /// Whether decoding may start here.
    bool IsRandomAccessPoint() const { return mIsRandomAccessPoint; }

private:
    UInt mAUIndex;
    bool mIsRandomAccessPoint;
};

}  // namespace Player::Packets
