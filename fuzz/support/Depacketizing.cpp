#include "support/Depacketizing.hpp"

#include <algorithm>

#include "Processors/RTP/Factories.hpp"

namespace Fuzz {

namespace {

constexpr std::uint32_t kTimestampStep = 3000;

void Put(Bytes& aOut, std::uint32_t aValue, unsigned aBytes) {
    while (0 != aBytes--) {
        aOut.push_back(static_cast<std::uint8_t>(aValue >> 8 * aBytes));
    }
}

PacketPtr Make(const Arrival& aArrival, std::size_t aPlace) {
    Bytes lData = {0x80, static_cast<std::uint8_t>(aArrival.mMarker ? 0xE0 : 0x60)};
    Put(lData, aArrival.mSeq, 2);
    Put(lData, aArrival.mTimestamp, 4);
    Put(lData, 0x12345678, 4);
    lData.insert(lData.end(), aArrival.mPayload.begin(), aArrival.mPayload.end());
    Player::Packets::RTP::Lengths lLengths;
    lLengths.mHeader = 12;
    PacketPtr lPacket(new Player::Packets::RTP(lData.data(), static_cast<Player::UInt>(lData.size()), lLengths,
                                               aArrival.mSeq, aArrival.mTimestamp));
    lPacket->SetPlayTime(Player::Time(static_cast<long long>(aPlace)));
    return lPacket;
}

}  // namespace

std::vector<Arrival> ReadArrivals(Input& aInput) {
    std::vector<Arrival> lArrivals;
    Arrival lNext;
    lNext.mSeq = static_cast<std::uint16_t>(aInput.Word16());
    while (!aInput.Empty()) {
        const unsigned lFlags = aInput.Byte();
        lNext.mMarker = 0 != (lFlags & 1);
        lNext.mSeq = static_cast<std::uint16_t>(lNext.mSeq + (0 != (lFlags & 2) ? 2 : 1));
        if (0 != (lFlags & 4)) { lNext.mSeq = static_cast<std::uint16_t>(aInput.Word16()); }
        if (0 != (lFlags & 8)) { lNext.mTimestamp += kTimestampStep; }
        lNext.mPayload = aInput.Chunk();
        if (!lNext.mPayload.empty()) { lArrivals.push_back(lNext); }
    }
    return lArrivals;
}

Chain::Chain(const char* aFormat, const std::string& aFmtParams, bool aIsTolerant) : mEnd(new Recorder()) {
    Player::Properties lFormat;
    lFormat.Insert("Transport", "RTP/AVP");
    lFormat.Insert("Format", aFormat);
    lFormat.Insert("FmtParams", aFmtParams);
    mProcessor = aIsTolerant ? Player::Processors::RTP::CreateTolerantDepacketizer(lFormat)
                             : Player::Processors::RTP::CreateDepacketizer(lFormat);
    FUZZ_CHECK(lFormat.Is("Transport", "Sample"));
    mProcessor->Attach(mEnd);
}

std::size_t Chain::Push(const Arrival& aArrival) {
    const std::size_t lBefore = mEnd->mSamples.size();
    const bool lWantsMore = mProcessor->Handle(Make(aArrival, mPushed++), Player::Time(0));
    const std::size_t lSamples = mEnd->mSamples.size() - lBefore;
    // The consumer answers no to every sample.
    FUZZ_CHECK(lWantsMore == (0 == lSamples));
    return lSamples;
}

void Chain::EndStream() {
    const unsigned lNotices = mEnd->mNotices;
    mProcessor->Param("EndOfStream", "Bye");
    FUZZ_CHECK(lNotices + 1 == mEnd->mNotices);
}

void Chain::Flush() {
    const std::size_t lSamples = mEnd->mSamples.size();
    const unsigned lFlushes = mEnd->mFlushes;
    mProcessor->Flush();
    FUZZ_CHECK(lFlushes + 1 == mEnd->mFlushes && lSamples == mEnd->mSamples.size());
}

Bytes Chain::BytesOf(const PacketPtr& aSample) {
    FUZZ_CHECK(aSample->End() == aSample->Begin() + aSample->Size());
    return Bytes(aSample->Begin(), aSample->End());
}

std::size_t Chain::PlaceOf(const PacketPtr& aSample) {
    return static_cast<std::size_t>(aSample->PlayTime().Get());
}

void Chain::Recorder::Param(const Player::String& aKey, const Player::String& aVal) {
    FUZZ_CHECK("EndOfStream" == aKey && "Bye" == aVal);
    ++mNotices;
}

bool Chain::Recorder::Handle(const PacketPtr& aPacket, Player::Time /*aLatest*/) {
    mSamples.push_back(aPacket);
    return false;
}

std::size_t TotalSize(const std::vector<Arrival>& aArrivals) {
    std::size_t lSize = 0;
    for (const Arrival& lArrival : aArrivals) {
        lSize += lArrival.mPayload.size();
    }
    return lSize;
}

bool Contains(const Bytes& aWhole, const std::uint8_t* aPart, std::size_t aSize) {
    return aWhole.end() != std::search(aWhole.begin(), aWhole.end(), aPart, aPart + aSize) || 0 == aSize;
}

}  // namespace Fuzz
