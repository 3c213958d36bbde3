#pragma once

#include "Packets/RTP.hpp"
#include "Player/Buffer.hpp"
#include "Processors/RTP/MP4VES.hpp"

namespace Player::Processors::RTP {

/// MP4V-ES of servers that set the marker on the first packet of a frame already: a frame goes on as long as packets
/// follow that have its timestamp and begin no other. So a frame is delivered when the packet after it has come, or at
/// "EndOfStream"; a marker after the first packet ends it at once, and none need come where no packet is missing.
/// Numbers may wrap within a frame.
class EarlyMarkers final : public MP4VES {
public:
    /// As `MP4VES::Create`.
    static SharedPtr<Processor, SharedObject> Create(Properties& aFormat);

    void Param(const String& aKey, const String& aVal) override;
    bool Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) override;
    void Flush() override;

private:
    bool Continues(const Packets::RTP& aPacket) const;
    void Start(const Packets::RTP& aPacket);
    void Append(const Packets::RTP& aPacket);
    /// Delivers what is gathered if it is whole. What the next link answers.
    bool Deliver(Time aLatest);

    static constexpr UInt kInitialCapacity = 4096;

    Buffer mFrame{kInitialCapacity};
    Time mPlayTime;
    UInt mTimestamp = 0;
    unsigned short mNextSeqNumber = 0;
    /// Of the last packet; also when the next one shows that it was the frame's last.
    bool mIsMarked = false;
};

}  // namespace Player::Processors::RTP
