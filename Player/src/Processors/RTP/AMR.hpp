#pragma once

#include "Processors/RTP/Depacketizer.hpp"

namespace Player::Processors::RTP {

/// Turns AMR narrow-band RTP packets (RFC 3267, octet-aligned, one channel) into one packet per speech
/// frame, without its table-of-contents byte.
class AMR : public Depacketizer {
public:
    /// A new depacketizer when the track is AMR over RTP, and "Transport" becomes "Sample"; else null.
    static SharedPtr<Processor, SharedObject> Create(Properties& aFormat);

    /// What the next link answered to the last frame; true when there was none.
    bool Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) override;
};

}  // namespace Player::Processors::RTP
