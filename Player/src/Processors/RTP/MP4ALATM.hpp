#pragma once

#include "Processors/RTP/RFC3016.hpp"

namespace Player::Processors::RTP {

/// Turns LATM RTP packets ("MP4A-LATM", RFC 3016 section 4) into one `Packets::MP4ASample` per audio frame.
/// Every packet stands for itself: of a frame spread over several only the last packet is looked at.
class MP4ALATM : public RFC3016 {
public:
    /// A new depacketizer when the track is MP4A-LATM over RTP, and "Transport" becomes "Sample"; else null.
    static SharedPtr<Processor, SharedObject> Create(Properties& aFormat);

    /// Every packet starts one.
    bool IsSampleStart(const Packets::RTP& aPacket) const override;

protected:
    /// True when nothing was handed on, else what the next link answered to the last sample.
    bool Decode(Time aPlayTime, const Byte* aData, UInt aSize, Time aLatest) const override;
};

}  // namespace Player::Processors::RTP
