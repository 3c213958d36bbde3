#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "Packets/MPEG4GenericSample.hpp"
#include "Packets/RTP.hpp"
#include "Player/BitReader.hpp"
#include "Processors/RTP/Depacketizer.hpp"

namespace Player::Processors::RTP {

/// Turns "mpeg4-generic" RTP packets (RFC 3640) into one `Packets::MPEG4GenericSample` per access unit.
/// The units gather until a packet with the marker bit; "EndOfStream" does not deliver them.
/// What reaches past a packet's end is cut to what is there, and bits that are missing are zero.
class MPEG4Generic : public Depacketizer {
public:
    /// A new depacketizer when the track is mpeg4-generic or enc-mpeg4-generic over RTP; else null.
    static SharedPtr<Processor, SharedObject> Create(Properties& aFormat);

    /// Reads the field widths from "FmtParams" and sets "Transport" to "Sample".
    explicit MPEG4Generic(Properties& aFormat);

    bool Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) override;
    void Flush() override;

protected:
    using PacketPtr = SharedPtr<Packets::RTP, SharedObject>;

    /// Steps over what stands before each AU header. Positions are in bits of the payload, as in the next two.
    virtual void ReadFormatSpecificFields(const unsigned char* aPayload, unsigned int& aBitPos);
    virtual void ReadAuHeader(const unsigned char* aPayload, unsigned int& aBitPos);
    /// Called at the end of the AU headers that were read.
    virtual void ReadAuxiliaryData(const unsigned char* aPayload, unsigned int& aBitPos);
    /// Takes the bytes of the access unit whose header was read last.
    virtual void SplitPayloadToSamples(const PacketPtr& aPacket);
    virtual void GetFragmentedAU(const PacketPtr& aPacket);
    virtual void GetCompleteAU(const PacketPtr& aPacket);
    virtual void GetConcatenatedAU(const PacketPtr& aPacket);

    /// The next bits of the payload at hand, as `BitReader` reads them: none are taken past its end.
    UInt ReadBits(const unsigned char* aPayload, unsigned int& aBitPos, unsigned int aBits) const;
    void SkipBits(const unsigned char* aPayload, unsigned int& aBitPos, std::uint64_t aBits) const;

    /// The parameter "mode".
    const String& Mode() const { return mMode; }
    /// The value of a numeric parameter, 0 when it is missing.
    SInt Parameter(const char* aKey) const;
    /// The value of a parameter that is a number of bits or bytes; 0 when it is missing or negative.
    UInt Width(const char* aKey) const;
    /// True while the first AU header of a packet is read.
    bool IsFirstAU() const { return mIsFirstAU; }

    bool mHasSeveralAUs = true;

private:
    using Sample = Packets::MPEG4GenericSample;

    bool Decode(const PacketPtr& aPacket, Time aLatest);
    void ReadParameters(const String& aText);
    void ReadAuHeadersLength(const Packets::RTP& aPacket, unsigned int& aBitPos);
    void FindData(const Packets::RTP& aPacket);
    void ReadAUs(const PacketPtr& aPacket, unsigned int& aBitPos);
    BitReader ReaderAt(const unsigned char* aPayload, unsigned int aBitPos) const;
    void StepOverTimeDelta(const unsigned char* aPayload, unsigned int& aBitPos, UInt aWidth) const;
    void AddSample(const Packets::RTP& aPacket, UInt aStart, UInt aSize);
    void Hold(UInt aBytes);
    bool DeliverSamples(Time aLatest);
    void ClearSamples();

    String mMode;
    std::map<String, SInt> mParameters;
    // The parameters that every packet asks for.
    UInt mSizeWidth = 0;
    UInt mIndexWidth = 0;
    UInt mIndexDeltaWidth = 0;
    UInt mCTSDeltaWidth = 0;
    UInt mDTSDeltaWidth = 0;
    UInt mStreamStateWidth = 0;
    UInt mAuxiliarySizeWidth = 0;
    bool mHasRandomAccessFlag = false;

    /// In bytes, of the packet at hand.
    UInt mPayloadSize = 0;
    /// In bits; then where the AU headers end. 16 bits wide like the field.
    unsigned short mAUHeadersLength = 0;
    UInt mAUSize = 0;
    UInt mAUIndex = 0;
    bool mIsRandomAccessPoint = false;
    bool mIsFirstAU = false;
    /// Offset in the payload of the first AU's data.
    UInt mDataStart = 0;
    /// Offset in the payload of the next concatenated AU's data.
    UInt mDataPosition = 0;
    /// Bytes that the AUs of the packet at hand took.
    unsigned long long mTakenBytes = 0;

    /// The AUs since the last marker bit. Emptied without giving up its room.
    std::vector<SharedPtr<Sample, SharedObject>> mSamples;
    /// What they occupy; beyond the limit they are lost, and so is what follows up to the marker bit.
    UInt mHeldBytes = 0;
};

}  // namespace Player::Processors::RTP
