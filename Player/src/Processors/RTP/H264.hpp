#pragma once

#include <vector>

#include "Packets/H264Sample.hpp"
#include "Packets/RTP.hpp"
#include "Processors/RTP/Depacketizer.hpp"

namespace Player::Processors::RTP {

/// Turns H.264 RTP packets (RFC 6184: single NAL units, STAP-A, FU-A) into one `Packets::H264Sample` per
/// access unit. A unit ends with the marker bit or, when that packet is lost, with the next timestamp.
class H264 : public Depacketizer {
public:
    /// A new depacketizer when the track is H.264 over RTP, and "Transport" becomes "Sample"; else null.
    static SharedPtr<Processor, SharedObject> Create(Properties& aFormat);

    /// As `Create`, but a unit ends also where a packet begins with an access unit delimiter, for senders that give
    /// several units one timestamp and no marker.
    static SharedPtr<Processor, SharedObject> CreateDelimited(Properties& aFormat);

    /// "EndOfStream" delivers the access unit being gathered before it goes on.
    void Param(const String& aKey, const String& aVal) override;
    bool Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) override;
    void Flush() override;

private:
    using PacketPtr = SharedPtr<Packets::RTP, SharedObject>;
    /// Emptied without giving up its room, so that gathering does not allocate.
    using PacketList = std::vector<PacketPtr>;

    /// Whether the packet shows that the gathered unit is complete.
    bool Ends(const Packets::RTP& aNext) const;
    bool Decode(PacketPtr aPacket, Time aLatest);
    bool DecodeSample(Time aLatest);
    void DecodePackets(Packets::H264Sample& aSample) const;
    static void DecodeSTAP(const Packets::RTP& aPacket, Packets::H264Sample& aSample);
    static void DecodeFU(PacketList::const_iterator& aIt, PacketList::const_iterator aEnd,
                         Packets::H264Sample& aSample);
    void Gather(PacketPtr aPacket);
    void ClearPending();
    UInt MaxSampleSize() const;

    /// The packets of the access unit being gathered, in order of arrival.
    PacketList mPending;
    /// What they occupy; beyond the limit the unit is lost and only its latest packet is kept.
    UInt mPendingBytes = 0;
    bool mEndsAtDelimiter = false;
    /// Part of a picture is gathered; kept only where units end at delimiters.
    bool mHasSlice = false;
};

}  // namespace Player::Processors::RTP
