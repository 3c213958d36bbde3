#pragma once

#include "Processors/RTP/RFC3016.hpp"

namespace Player::Processors::RTP {

/// Turns MPEG-4 visual RTP packets ("MP4V-ES", RFC 3016 section 3) into one `Packets::MP4VSample` per frame.
class MP4VES : public RFC3016 {
public:
    /// A new depacketizer when the track is MP4V-ES over RTP, and "Transport" becomes "Sample"; else null.
    static SharedPtr<Processor, SharedObject> Create(Properties& aFormat);

    /// A frame starts with a start code.
    bool IsSampleStart(const Packets::RTP& aPacket) const override;

protected:
    bool Decode(Time aPlayTime, const Byte* aData, UInt aSize, Time aLatest) const override;
};

}  // namespace Player::Processors::RTP
