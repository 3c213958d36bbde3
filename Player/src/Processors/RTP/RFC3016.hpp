#pragma once

#include "Packets/RTP.hpp"
#include "Player/Buffer.hpp"
#include "Processors/RTP/Depacketizer.hpp"

namespace Player::Processors::RTP {

/// Gathers the RTP packets of one frame for the payload formats of RFC 3016: from a packet that starts a
/// frame to the marker bit. A frame with a packet missing is dropped.
class RFC3016 : public Depacketizer {
public:
    bool Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) override;
    void Flush() override;

    /// Whether the packet is the first of a frame.
    virtual bool IsSampleStart(const Packets::RTP& aPacket) const = 0;

protected:
    /// Hands the samples of a complete frame on; what the next link answers.
    virtual bool Decode(Time aPlayTime, const Byte* aData, UInt aSize, Time aLatest) const = 0;

private:
    static constexpr UInt kInitialCapacity = 4096;

    bool Decode(const Packets::RTP& aPacket, Time aLatest);

    /// Wider than the number in the packet: a frame does not go on across 65535.
    SInt mExpectedSeqNumber = 0;
    Buffer mBuffer{kInitialCapacity};
};

}  // namespace Player::Processors::RTP
