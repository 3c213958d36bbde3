// H.264: a sample is whole NAL units out of the packets of one access unit, each byte used once; units that were
// packetized by hand come out as they were, but for those of which a fragment is lost.

#include "support/Depacketizing.hpp"

namespace Fuzz {

/// Each packet is held twice and each is an object; so is each sample.
const Bounds kBounds{16384, 512};

namespace {

constexpr char kFormat[] = "H264";

std::vector<Bytes> UnitsOf(const Bytes& aSample) {
    std::vector<Bytes> lUnits;
    Input lSample(aSample.data(), aSample.size());
    while (!lSample.Empty()) {
        FUZZ_CHECK(lSample.Left() > 4);
        const std::uint32_t lSize = lSample.Word32();
        FUZZ_CHECK(0 != lSize && lSize <= lSample.Left());
        lUnits.push_back(lSample.Take(lSize));
    }
    return lUnits;
}

/// The packets of each access unit: it ends with the marker or with another timestamp.
std::vector<std::vector<std::size_t>> AccessUnits(const std::vector<Arrival>& aArrivals) {
    std::vector<std::vector<std::size_t>> lUnits(1);
    for (std::size_t lIdx = 0; lIdx < aArrivals.size(); ++lIdx) {
        const bool lIsNext =
            !lUnits.back().empty() && aArrivals[lUnits.back().back()].mTimestamp != aArrivals[lIdx].mTimestamp;
        if (lIsNext) { lUnits.emplace_back(); }
        lUnits.back().push_back(lIdx);
        if (aArrivals[lIdx].mMarker) { lUnits.emplace_back(); }
    }
    return lUnits;
}

void CheckSample(const PacketPtr& aSample, const std::vector<Arrival>& aArrivals,
                 const std::vector<std::size_t>& aAccessUnit) {
    std::size_t lReceived = 0;
    Bytes lFragments;
    for (const std::size_t lIdx : aAccessUnit) {
        const Bytes& lPayload = aArrivals[lIdx].mPayload;
        lReceived += lPayload.size();
        if (lPayload.size() > 2) { lFragments.insert(lFragments.end(), lPayload.begin() + 2, lPayload.end()); }
    }
    std::size_t lDelivered = 0;
    for (const Bytes& lUnit : UnitsOf(Chain::BytesOf(aSample))) {
        lDelivered += lUnit.size();
        bool lIsThere = Contains(lFragments, lUnit.data() + 1, lUnit.size() - 1);
        for (const std::size_t lIdx : aAccessUnit) {
            lIsThere = lIsThere || Contains(aArrivals[lIdx].mPayload, lUnit.data(), lUnit.size());
        }
        FUZZ_CHECK(lIsThere);
    }
    FUZZ_CHECK(lDelivered <= lReceived);
}

/// A tolerant one begins another sample in front of such a packet.
bool BeginsWithDelimiter(const Bytes& aPayload) {
    const bool lIsAggregate = 24 == (aPayload[0] & 0x1F) && aPayload.size() > 3;
    return 9 == (aPayload[lIsAggregate ? 3 : 0] & 0x1F);
}

void TakeAnything(Input& aInput, bool aIsTolerant) {
    const bool lFlushes = aInput.Flag();
    const std::vector<Arrival> lArrivals = ReadArrivals(aInput);
    Chain lChain(kFormat, "", aIsTolerant);
    for (const Arrival& lArrival : lArrivals) {
        FUZZ_CHECK(lChain.Push(lArrival) <= 2);
    }
    if (lFlushes) { lChain.Flush(); }
    lChain.EndStream();

    auto lUnits = AccessUnits(lArrivals);
    auto lUnit = lUnits.begin();
    for (const PacketPtr& lSample : lChain.Samples()) {
        // In order, at most one for each access unit, at the time of its first packet.
        const std::size_t lPlace = Chain::PlaceOf(lSample);
        while (lUnit != lUnits.end() && (lUnit->empty() || lUnit->back() < lPlace)) {
            ++lUnit;
        }
        FUZZ_CHECK(lUnit != lUnits.end() && lUnit->front() <= lPlace);
        const bool lIsDelimited = aIsTolerant && BeginsWithDelimiter(lArrivals[lPlace].mPayload);
        FUZZ_CHECK(lIsDelimited || lUnit->front() == lPlace);
        CheckSample(lSample, lArrivals,
                    {lUnit->begin() + static_cast<std::ptrdiff_t>(lPlace - lUnit->front()), lUnit->end()});
        // What has begun is behind that.
        lUnit->erase(lUnit->begin(), lUnit->begin() + static_cast<std::ptrdiff_t>(lPlace - lUnit->front() + 1));
        if (!aIsTolerant) { ++lUnit; }
    }
}

/// Writes NAL units into the packets of one access unit.
class Packetizer {
public:
    void Single(const Bytes& aUnit) { Add(aUnit); }
    void Aggregate(const std::vector<Bytes>& aUnits) {
        Bytes lPayload = {0x78};
        for (const Bytes& lUnit : aUnits) {
            lPayload.push_back(static_cast<std::uint8_t>(lUnit.size() >> 8));
            lPayload.push_back(static_cast<std::uint8_t>(lUnit.size()));
            lPayload.insert(lPayload.end(), lUnit.begin(), lUnit.end());
        }
        Add(lPayload);
    }
    /// False when a fragment got lost on the way.
    bool Fragments(const Bytes& aUnit, std::size_t aSize, std::size_t aLost) {
        const std::vector<Bytes> lPieces =
            Cut(Bytes(aUnit.begin() + 1, aUnit.end()), {static_cast<std::uint8_t>(aSize)});
        for (std::size_t lIdx = 0; lIdx < lPieces.size(); ++lIdx) {
            const unsigned lStart = 0 == lIdx ? 0x80 : 0;
            const unsigned lEnd = lPieces.size() == lIdx + 1 ? 0x40 : 0;
            Bytes lPayload = {static_cast<std::uint8_t>((aUnit[0] & 0xE0) | 28),
                              static_cast<std::uint8_t>(lStart | lEnd | (aUnit[0] & 0x1F))};
            lPayload.insert(lPayload.end(), lPieces[lIdx].begin(), lPieces[lIdx].end());
            if (lIdx == aLost) {
                ++mSeq;
            } else {
                Add(lPayload);
            }
        }
        return aLost >= lPieces.size();
    }
    std::vector<Arrival> mArrivals;
    std::uint16_t mSeq = 0;

private:
    void Add(const Bytes& aPayload) {
        Arrival lArrival;
        lArrival.mPayload = aPayload;
        lArrival.mSeq = mSeq++;
        mArrivals.push_back(lArrival);
    }
};

/// Of fragmented units: after one that lost its start the next takes over its importance, so all have the same.
constexpr unsigned kImportance = 0x60;

/// A unit's header and up to 255 bytes.
Bytes ReadUnit(Input& aInput) {
    const unsigned lHeader = aInput.Byte();
    Bytes lUnit = {static_cast<std::uint8_t>((lHeader & 0xE0) | (1 + (lHeader & 0x1F) % 23))};
    const Bytes lData = aInput.Take(aInput.Byte());
    lUnit.insert(lUnit.end(), lData.begin(), lData.end());
    return lUnit;
}

void ComeThrough(Input& aInput, bool aIsTolerant) {
    Packetizer lPacketizer;
    lPacketizer.mSeq = static_cast<std::uint16_t>(aInput.Word16());
    std::vector<Bytes> lExpected;
    while (!aInput.Empty()) {
        const unsigned lWay = aInput.Byte();
        if (0 == lWay % 3) {
            lExpected.push_back(ReadUnit(aInput));
            lPacketizer.Single(lExpected.back());
        } else if (1 == lWay % 3) {
            std::vector<Bytes> lUnits;
            for (unsigned lCount = 1 + lWay / 3 % 4; 0 != lCount; --lCount) {
                lUnits.push_back(ReadUnit(aInput));
            }
            lPacketizer.Aggregate(lUnits);
            lExpected.insert(lExpected.end(), lUnits.begin(), lUnits.end());
        } else {
            const std::size_t lSize = 1 + aInput.Byte() % 100;
            const std::size_t lLost = aInput.Byte();
            Bytes lUnit = ReadUnit(aInput);
            lUnit.push_back(0x80);
            lUnit[0] = static_cast<std::uint8_t>(kImportance | (lUnit[0] & 0x1F));
            if (lPacketizer.Fragments(lUnit, lSize, lLost)) { lExpected.push_back(lUnit); }
        }
    }
    Chain lChain(kFormat, "", aIsTolerant);
    for (const Arrival& lArrival : lPacketizer.mArrivals) {
        FUZZ_CHECK(lChain.Push(lArrival) <= (aIsTolerant ? 1 : 0));
    }
    lChain.EndStream();
    FUZZ_CHECK(aIsTolerant || lChain.Samples().size() == (lExpected.empty() ? 0 : 1));
    std::vector<Bytes> lUnits;
    for (const PacketPtr& lSample : lChain.Samples()) {
        const std::vector<Bytes> lOfSample = UnitsOf(Chain::BytesOf(lSample));
        lUnits.insert(lUnits.end(), lOfSample.begin(), lOfSample.end());
    }
    FUZZ_CHECK(lUnits == lExpected);
}

}  // namespace

void Run(Input& aInput) {
    const unsigned lFlags = aInput.Byte();
    const bool lIsTolerant = 0 != (lFlags & 2);
    if (0 != (lFlags & 1)) {
        ComeThrough(aInput, lIsTolerant);
    } else {
        TakeAnything(aInput, lIsTolerant);
    }
}

}  // namespace Fuzz
