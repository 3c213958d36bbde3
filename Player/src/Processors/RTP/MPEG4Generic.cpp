#include "Processors/RTP/MPEG4Generic.hpp"

#include <algorithm>
#include <cstdint>

#include "Player/FormatParameters.hpp"
#include "Player/Mem.hpp"
#include "Player/String.hpp"
#include "Processors/RTP/EncMPEG4Generic.hpp"

namespace Player::Processors::RTP {

namespace {

constexpr UInt kLengthFieldBytes = 2;
constexpr UInt kLengthFieldBits = 16;

/// Headers may claim the same bytes over and over, and each claim is a copy. A proper packet's AUs take
/// each byte once; a packet that has taken this many times its own size is left alone.
constexpr UInt kMaxCopies = 16;

UInt BytesOf(std::uint64_t aBits) {
    return static_cast<UInt>((aBits + 7) / 8);
}

}  // namespace

SharedPtr<Processor, SharedObject> MPEG4Generic::Create(Properties& aFormat) {
    if (IsFormat(aFormat, "mpeg4-generic")) { return SharedPtr<Processor, SharedObject>(new MPEG4Generic(aFormat)); }
    if (IsFormat(aFormat, "enc-mpeg4-generic")) {
        return SharedPtr<Processor, SharedObject>(new EncMPEG4Generic(aFormat));
    }
    return {};
}

MPEG4Generic::MPEG4Generic(Properties& aFormat) {
    ReadParameters(aFormat.Get("FmtParams"));
    mSizeWidth = Width("sizelength");
    mIndexWidth = Width("indexlength");
    mIndexDeltaWidth = Width("indexdeltalength");
    mCTSDeltaWidth = Width("ctsdeltalength");
    mDTSDeltaWidth = Width("dtsdeltalength");
    mStreamStateWidth = Width("streamstateindication");
    mAuxiliarySizeWidth = Width("auxiliarydatasizelength");
    mHasRandomAccessFlag = 0 != Parameter("randomaccessindication");
    SetDeliversSamples(aFormat);
}

void MPEG4Generic::ReadParameters(const String& aText) {
    const FormatParameters lParameters(aText);
    for (const auto& [lKey, lVal] : lParameters.All()) {
        if ("mode" == lKey) {
            mMode = lVal;
        } else if ("config" != lKey) {
            mParameters[lKey] = static_cast<SInt>(DecimalToUInt(lVal));
        }
    }
}

SInt MPEG4Generic::Parameter(const char* aKey) const {
    const auto lEntry = mParameters.find(aKey);
    return mParameters.end() == lEntry ? 0 : lEntry->second;
}

UInt MPEG4Generic::Width(const char* aKey) const {
    return static_cast<UInt>(Util::Max(Parameter(aKey), 0));
}

bool MPEG4Generic::Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) {
    return Decode(PacketPtr(static_cast<Packets::RTP*>(&aPacket.Ref())), aLatest);
}

void MPEG4Generic::Flush() {
    ClearSamples();
    Depacketizer::Flush();
}

// Payload (RFC 3640 section 3.2):
//   AU-headers length in bits (16 bits)
//   AU headers, filled up to whole bytes
//   auxiliary data size in bits and the data, when the size has a width
//   the AUs' data
bool MPEG4Generic::Decode(const PacketPtr& aPacket, Time aLatest) {
    mPayloadSize = aPacket->Size();
    unsigned int lBitPos = 0;
    ReadAuHeadersLength(*aPacket, lBitPos);
    FindData(*aPacket);
    ReadAUs(aPacket, lBitPos);
    ReadAuxiliaryData(aPacket->Begin(), lBitPos);
    return !aPacket->HasMarker() || DeliverSamples(aLatest);
}

BitReader MPEG4Generic::ReaderAt(const unsigned char* aPayload, unsigned int aBitPos) const {
    BitReader lBits(aPayload, mPayloadSize);
    lBits.Seek(aBitPos);
    return lBits;
}

UInt MPEG4Generic::ReadBits(const unsigned char* aPayload, unsigned int& aBitPos, unsigned int aBits) const {
    BitReader lBits = ReaderAt(aPayload, aBitPos);
    const UInt lValue = lBits.Read(aBits);
    aBitPos = static_cast<unsigned int>(lBits.Position());
    return lValue;
}

void MPEG4Generic::SkipBits(const unsigned char* aPayload, unsigned int& aBitPos, std::uint64_t aBits) const {
    BitReader lBits = ReaderAt(aPayload, aBitPos);
    lBits.Skip(aBits);
    aBitPos = static_cast<unsigned int>(lBits.Position());
}

void MPEG4Generic::ReadAuHeadersLength(const Packets::RTP& aPacket, unsigned int& aBitPos) {
    const UInt lLength = ReadBits(aPacket.Begin(), aBitPos, kLengthFieldBits);
    const UInt lBytesLeft = aPacket.Size() - Util::Min(aPacket.Size(), kLengthFieldBytes);
    const std::uint64_t lCut = Util::Min(std::uint64_t{lLength}, std::uint64_t{lBytesLeft} * 8);
    mAUHeadersLength = static_cast<unsigned short>(lCut);
}

/// Finds where the data starts and where the AU headers end.
void MPEG4Generic::FindData(const Packets::RTP& aPacket) {
    std::uint64_t lStart = BytesOf(mAUHeadersLength);
    if (mAuxiliarySizeWidth > 0) {
        // Deliberately the size is looked for before the length field is counted, and its own bits are not
        // stepped over.
        BitReader lBits(aPacket.Begin(), aPacket.Size());
        lBits.Seek(lStart * 8);
        lStart += BytesOf(lBits.Read(mAuxiliarySizeWidth));
    }
    lStart += kLengthFieldBytes;
    mDataStart = static_cast<UInt>(Util::Min(lStart, std::uint64_t{aPacket.Size()}));
    mDataPosition = mDataStart;
    mAUHeadersLength = static_cast<unsigned short>(mAUHeadersLength + kLengthFieldBits);
}

void MPEG4Generic::ReadAUs(const PacketPtr& aPacket, unsigned int& aBitPos) {
    const Byte* const lPayload = aPacket->Begin();
    const std::uint64_t lMostTaken = std::uint64_t{mPayloadSize} * kMaxCopies;
    mIsFirstAU = true;
    mTakenBytes = 0;
    while (aBitPos < mAUHeadersLength && !ReaderAt(lPayload, aBitPos).AtEnd() && mTakenBytes <= lMostTaken) {
        const unsigned int lHeader = aBitPos;
        ReadFormatSpecificFields(lPayload, aBitPos);
        ReadAuHeader(lPayload, aBitPos);
        SplitPayloadToSamples(aPacket);
        mIsFirstAU = false;
        // Headers without any field would go on for ever.
        if (!mHasSeveralAUs || aBitPos == lHeader) { break; }
    }
}

void MPEG4Generic::ReadFormatSpecificFields(const unsigned char* /*aPayload*/, unsigned int& /*aBitPos*/) {}

void MPEG4Generic::ReadAuxiliaryData(const unsigned char* /*aPayload*/, unsigned int& /*aBitPos*/) {}

void MPEG4Generic::ReadAuHeader(const unsigned char* aPayload, unsigned int& aBitPos) {
    mAUSize = ReadBits(aPayload, aBitPos, mSizeWidth);
    if (mIndexWidth > 0) {
        if (mIsFirstAU) {
            mAUIndex = ReadBits(aPayload, aBitPos, mIndexWidth);
        } else {
            const std::uint64_t lModulus = std::uint64_t{1} << Util::Min(mIndexWidth, 32U);
            const UInt lDelta = ReadBits(aPayload, aBitPos, mIndexDeltaWidth);
            mAUIndex = (mAUIndex + lDelta + 1) & static_cast<UInt>(lModulus - 1);
        }
    }
    StepOverTimeDelta(aPayload, aBitPos, mCTSDeltaWidth);
    StepOverTimeDelta(aPayload, aBitPos, mDTSDeltaWidth);
    mIsRandomAccessPoint = mHasRandomAccessFlag && 0 != ReadBits(aPayload, aBitPos, 1);
    SkipBits(aPayload, aBitPos, mStreamStateWidth);
}

/// A flag and, when it is set, the delta. All AUs of a packet play at the packet's time.
void MPEG4Generic::StepOverTimeDelta(const unsigned char* aPayload, unsigned int& aBitPos, UInt aWidth) const {
    if (aWidth > 0 && 0 != ReadBits(aPayload, aBitPos, 1)) { SkipBits(aPayload, aBitPos, aWidth); }
}

void MPEG4Generic::SplitPayloadToSamples(const PacketPtr& aPacket) {
    const UInt lRemaining = aPacket->Size() - mDataStart;
    if (0 == mAUSize || mAUSize > lRemaining) {
        GetFragmentedAU(aPacket);
    } else if (mAUSize < lRemaining) {
        GetConcatenatedAU(aPacket);
    } else {
        GetCompleteAU(aPacket);
    }
}

void MPEG4Generic::GetCompleteAU(const PacketPtr& aPacket) {
    AddSample(*aPacket, mDataStart, mAUSize);
}

void MPEG4Generic::GetConcatenatedAU(const PacketPtr& aPacket) {
    const UInt lSize = Util::Min(mAUSize, aPacket->Size() - mDataPosition);
    if (0 == lSize) { return; }
    AddSample(*aPacket, mDataPosition, lSize);
    mDataPosition += lSize;
}

void MPEG4Generic::GetFragmentedAU(const PacketPtr& aPacket) {
    const UInt lSize = aPacket->Size() - mDataStart;
    if (mSamples.empty()) {
        AddSample(*aPacket, mDataStart, lSize);
        return;
    }
    mTakenBytes += lSize;
    mSamples.back()->Append(aPacket->Begin() + mDataStart, lSize);
    Hold(lSize);
}

void MPEG4Generic::AddSample(const Packets::RTP& aPacket, UInt aStart, UInt aSize) {
    mTakenBytes += aSize;
    mSamples.emplace_back(
        new Sample(aPacket.PlayTime(), aPacket.Begin() + aStart, aSize, mAUIndex, mIsRandomAccessPoint));
    Hold(static_cast<UInt>(sizeof(Sample)) + aSize);
}

void MPEG4Generic::Hold(UInt aBytes) {
    if (mHeldBytes <= kMaxPendingBytes) { mHeldBytes += aBytes; }
    if (mHeldBytes > kMaxPendingBytes) { mSamples.clear(); }
}

bool MPEG4Generic::DeliverSamples(Time aLatest) {
    bool lOk = true;
    for (const SharedPtr<Sample, SharedObject>& lSample : mSamples) {
        lOk = Next().Handle(lSample, aLatest) && lOk;
    }
    ClearSamples();
    return lOk;
}

void MPEG4Generic::ClearSamples() {
    mSamples.clear();
    mHeldBytes = 0;
}

}  // namespace Player::Processors::RTP
