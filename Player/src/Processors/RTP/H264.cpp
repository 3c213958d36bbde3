#include "Processors/RTP/H264.hpp"

#include <utility>

#include "BigEndian.hpp"

namespace Player::Processors::RTP {

namespace {

constexpr Byte kTypeBits = 0x1F;
constexpr Byte kFirstSingle = 1;
constexpr Byte kLastSingle = 23;
constexpr Byte kSTAPA = 24;
constexpr Byte kFUA = 28;

// NAL units (ITU-T H.264 table 7-1).
constexpr Byte kFirstSlice = 1;
constexpr Byte kLastSlice = 5;
constexpr Byte kDelimiter = 9;
/// Each unit of an aggregate is preceded by its size; the first unit's header is there.
constexpr UInt kAggregateSize = 2;
constexpr UInt kAggregatedAt = 3;

// Payload of a fragment (RFC 6184 section 5.8):
//   FU indicator: F (1 bit), NRI (2), type 28 (5)
//   FU header:    S (1 bit), E (1), R (1), type of the NAL unit (5)
//   the NAL unit's bytes without its header
constexpr UInt kFUHeaderSize = 2;
constexpr Byte kFUStart = 0x80;
constexpr Byte kFUEnd = 0x40;

Byte NALType(const Packets::RTP& aPacket) {
    return 0 == aPacket.Size() ? Byte{0} : static_cast<Byte>(*aPacket.Begin() & kTypeBits);
}

/// Whether the second byte has one of these bits; a payload too short for it has none.
bool HasFUFlag(const Packets::RTP& aPacket, Byte aFlag) {
    return aPacket.Size() >= kFUHeaderSize && 0 != (aPacket.Begin()[1] & aFlag);
}

bool IsSlice(Byte aHeader) {
    const Byte lType = aHeader & kTypeBits;
    return kFirstSlice <= lType && lType <= kLastSlice;
}

/// Calls with the header of each unit of an aggregate until one is found that the call is true for.
template <typename Call>
bool AnyAggregated(const Packets::RTP& aPacket, Call aCall) {
    for (UInt lAt = kAggregatedAt; lAt < aPacket.Size();) {
        if (aCall(aPacket.Begin()[lAt])) { return true; }
        lAt += BigEndian::Read16(aPacket.Begin() + lAt - kAggregateSize) + kAggregateSize;
    }
    return false;
}

bool BeginsWithDelimiter(const Packets::RTP& aPacket) {
    const bool lIsAggregate = kSTAPA == NALType(aPacket) && aPacket.Size() > kAggregatedAt;
    return kDelimiter == (lIsAggregate ? aPacket.Begin()[kAggregatedAt] & kTypeBits : NALType(aPacket));
}

bool HasSlice(const Packets::RTP& aPacket) {
    switch (NALType(aPacket)) {
        case kSTAPA: return AnyAggregated(aPacket, IsSlice);
        case kFUA: return aPacket.Size() >= kFUHeaderSize && IsSlice(aPacket.Begin()[1]);
        default: return IsSlice(NALType(aPacket));
    }
}

}  // namespace

SharedPtr<Processor, SharedObject> H264::Create(Properties& aFormat) {
    return CreateFor<H264>(aFormat, "H264");
}

SharedPtr<Processor, SharedObject> H264::CreateDelimited(Properties& aFormat) {
    SharedPtr<Processor, SharedObject> lProcessor = Create(aFormat);
    if (lProcessor) { static_cast<H264&>(*lProcessor).mEndsAtDelimiter = true; }
    return lProcessor;
}

void H264::Param(const String& aKey, const String& aVal) {
    if ("EndOfStream" == aKey && !mPending.empty()) {
        const Time lLatest = mPending.back()->PlayTime();
        DecodeSample(lLatest);
    }
    Depacketizer::Param(aKey, aVal);
}

bool H264::Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) {
    return Decode(PacketPtr(static_cast<Packets::RTP*>(&aPacket.Ref())), aLatest);
}

void H264::Flush() {
    ClearPending();
    Depacketizer::Flush();
}

bool H264::Decode(PacketPtr aPacket, Time aLatest) {
    bool lOk = true;
    if (!mPending.empty() && Ends(*aPacket)) { lOk = DecodeSample(aLatest); }
    const bool lIsLast = aPacket->HasMarker();
    Gather(std::move(aPacket));
    // A consumer that wants no more for now must still get the unit that is complete.
    if (lIsLast) { lOk = DecodeSample(aLatest) && lOk; }
    return lOk;
}

bool H264::Ends(const Packets::RTP& aNext) const {
    if (mPending.back()->Timestamp() != aNext.Timestamp()) { return true; }
    // Parameter sets and the like may stand in front of a delimiter: they go with what follows.
    return mHasSlice && BeginsWithDelimiter(aNext);
}

void H264::Gather(PacketPtr aPacket) {
    // The whole datagram counts, not the payload alone: that is what the sender makes us hold.
    const UInt lHeld = static_cast<UInt>(sizeof(Packets::RTP)) + aPacket->Datagram().Size();
    if (mPendingBytes <= kMaxPendingBytes) { mPendingBytes += lHeld; }
    if (mPendingBytes > kMaxPendingBytes) { mPending.clear(); }
    if (mEndsAtDelimiter) { mHasSlice = mHasSlice || HasSlice(*aPacket); }
    mPending.push_back(std::move(aPacket));
}

void H264::ClearPending() {
    mPending.clear();
    mPendingBytes = 0;
    mHasSlice = false;
}

bool H264::DecodeSample(Time aLatest) {
    SharedPtr<Packets::H264Sample, SharedObject> lSample(new Packets::H264Sample(mPending.front()->PlayTime()));
    if (mPendingBytes <= kMaxPendingBytes) { DecodePackets(*lSample); }
    ClearPending();
    return 0 == lSample->Size() || Next().Handle(lSample, aLatest);
}

void H264::DecodePackets(Packets::H264Sample& aSample) const {
    aSample.Grow(MaxSampleSize());
    for (PacketList::const_iterator lIt = mPending.begin(); lIt != mPending.end();) {
        const Packets::RTP& lPacket = **lIt;
        const Byte lType = NALType(lPacket);
        if (kFUA == lType) {
            DecodeFU(lIt, mPending.end(), aSample);
            continue;
        }
        if (kSTAPA == lType) {
            DecodeSTAP(lPacket, aSample);
        } else if (kFirstSingle <= lType && lType <= kLastSingle) {
            aSample.AppendNAL(lPacket.Begin(), lPacket.Size());
        }
        ++lIt;
    }
}

/// The most that the pending packets can give, so that the sample is allocated once.
UInt H264::MaxSampleSize() const {
    UInt lMost = 0;
    for (const PacketPtr& lPacket : mPending) {
        const UInt lSize = lPacket->Size();
        lMost += lSize + Packets::H264Sample::kSizeBytes;
        // A unit takes at least 3 bytes of an aggregate, and its length grows from 2 bytes to 4.
        if (kSTAPA == NALType(*lPacket)) { lMost += lSize / 3 * 2; }
    }
    return lMost;
}

// Payload of an aggregate (RFC 6184 section 5.7.1): one byte STAP-A header, then for each NAL unit its
// size (16 bits) and its bytes.
void H264::DecodeSTAP(const Packets::RTP& aPacket, Packets::H264Sample& aSample) {
    const Byte* const lData = aPacket.Begin();
    const UInt lEnd = aPacket.Size();
    for (UInt lAt = 1; lEnd - lAt > 2;) {
        const UInt lSize = BigEndian::Read16(lData + lAt);
        lAt += 2;
        // A size that cannot be is stepped over alone: a good unit may follow.
        if (0 == lSize || lSize > lEnd - lAt) { continue; }
        aSample.AppendNAL(lData + lAt, lSize);
        lAt += lSize;
    }
}

/// Joins the fragments from `aIt` on to one NAL unit and leaves `aIt` at the first packet that it did not
/// use. A unit with a fragment missing is dropped whole.
void H264::DecodeFU(PacketList::const_iterator& aIt, PacketList::const_iterator aEnd, Packets::H264Sample& aSample) {
    const Byte lNALHeader = static_cast<Byte>(*(*aIt)->Begin() & ~kTypeBits);
    while (!HasFUFlag(**aIt, kFUStart)) {
        ++aIt;
        if (aIt == aEnd || kFUA != NALType(**aIt)) { return; }
    }

    unsigned short lSeqNumber = (*aIt)->SeqNumber();
    const UInt lMark = aSample.Mark();
    aSample.Grow((*aIt)->Size() + 3);
    aSample.AppendSize(0);
    aSample.Append(static_cast<Byte>(lNALHeader | ((*aIt)->Begin()[1] & kTypeBits)));
    for (;;) {
        const Packets::RTP& lFragment = **aIt;
        if (lFragment.Size() > kFUHeaderSize) {
            aSample.Append(lFragment.Begin() + kFUHeaderSize, lFragment.Size() - kFUHeaderSize);
        }
        ++aIt;
        if (HasFUFlag(lFragment, kFUEnd)) {
            aSample.ModifySize(lMark, aSample.Mark() - lMark - Packets::H264Sample::kSizeBytes);
            return;
        }
        // The sequence number alone says what continues a unit; the type byte is not looked at.
        ++lSeqNumber;
        if (aIt == aEnd || (*aIt)->SeqNumber() != lSeqNumber || HasFUFlag(**aIt, kFUStart)) {
            aSample.Revert(lMark);
            return;
        }
    }
}

}  // namespace Player::Processors::RTP
