#pragma once

#include "Player/Packet.hpp"

namespace Player::Packets {

/// One H.264 access unit: its NAL units in order, each preceded by its length as 4 bytes, big-endian.
/// Sizes and positions are in bytes. An access unit beyond 32 bits throws `std::length_error`.
class H264Sample : public Media {
public:
    /// What stands before each NAL unit.
    static constexpr UInt kSizeBytes = 4;

    explicit H264Sample(Time aPlayTime) : Media(aPlayTime) {}

    /// The length so far: a position to come back to.
    UInt Mark() const { return Data().Size(); }
    /// Makes room for `aMore` bytes; the length stays.
    void Grow(UInt aMore) { Reserve(aMore, 0); }

    void Append(Byte aByte) { Data().Append(aByte); }
    void Append(const void* aData, UInt aSize) { Data().Append(aData, aSize); }
    void AppendSize(UInt aSize);
    /// A whole NAL unit with its length.
    void AppendNAL(const void* aData, UInt aSize);
    /// Sets the length that was appended at `aAt`.
    void ModifySize(UInt aAt, UInt aSize);
    /// Cuts off all that was appended since `Mark` gave `aAt`.
    void Revert(UInt aAt);

    /// Whether no other picture refers to this one, by the nal_ref_idc of the first NAL unit.
    bool IsDisposable() const override;

private:
    void Reserve(UInt aMore, UInt aOverhead);
};

}  // namespace Player::Packets
