#pragma once

#include "Processors/RTP/MPEG4Generic.hpp"

namespace Player::Processors::RTP {

/// "enc-mpeg4-generic": mpeg4-generic with ISMACryp fields before the AU header. They are stepped over; the
/// data stays encrypted. One AU per packet.
class EncMPEG4Generic : public MPEG4Generic {
public:
    explicit EncMPEG4Generic(Properties& aFormat);

protected:
    void ReadFormatSpecificFields(const unsigned char* aPayload, unsigned int& aBitPos) override;
    /// A video frame spans packets: all that comes up to the marker bit is one sample.
    void SplitPayloadToSamples(const PacketPtr& aPacket) override;

private:
    bool mIsVideo;
    bool mHasEncryptedFlag;
    bool mHasKeyIndicatorPerAU;
    // In bytes.
    UInt mIVWidth;
    UInt mDeltaIVWidth;
    UInt mKeyIndicatorWidth;
};

}  // namespace Player::Processors::RTP
