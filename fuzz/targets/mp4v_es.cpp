// MP4V-ES: a sample begins with a start code, ends with the payload of the packet that had the marker and is no larger
// than what came since the sample before; frames cut into packets come out whole.

#include <algorithm>

#include "support/Depacketizing.hpp"

namespace Fuzz {

const Bounds kBounds{16384, 512};

namespace {

constexpr char kFormat[] = "MP4V-ES";

bool BeginsWithStartCode(const Bytes& aPayload) {
    const Bytes lCode = {0, 0, 1};
    return aPayload.size() >= lCode.size() && std::equal(lCode.begin(), lCode.end(), aPayload.begin());
}

void TakeAnything(Input& aInput) {
    const std::vector<Arrival> lArrivals = ReadArrivals(aInput);
    Chain lChain(kFormat, "");
    std::size_t lReceived = 0;
    for (std::size_t lIdx = 0; lIdx < lArrivals.size(); ++lIdx) {
        const Arrival& lArrival = lArrivals[lIdx];
        lReceived += lArrival.mPayload.size();
        const std::size_t lSamples = lChain.Push(lArrival);
        FUZZ_CHECK(lSamples <= (lArrival.mMarker ? 1 : 0));
        if (BeginsWithStartCode(lArrival.mPayload) && lArrival.mMarker) { FUZZ_CHECK(1 == lSamples); }
        if (0 == lSamples) { continue; }
        const Bytes lSample = Chain::BytesOf(lChain.Samples().back());
        FUZZ_CHECK(BeginsWithStartCode(lSample) && lSample.size() <= lReceived);
        FUZZ_CHECK(std::equal(lArrival.mPayload.rbegin(), lArrival.mPayload.rend(), lSample.rbegin()));
        FUZZ_CHECK(lIdx == Chain::PlaceOf(lChain.Samples().back()));
        // What is gathered is kept when a frame comes that needs no gathering.
        if (lSample.size() != lArrival.mPayload.size()) { lReceived = 0; }
    }
}

/// A fragment that looks like the start of a frame is taken for one.
bool HasStartCodeInside(const std::vector<Bytes>& aPieces) {
    return std::any_of(aPieces.begin() + 1, aPieces.end(), BeginsWithStartCode);
}

/// The number after 65535 is not taken for the next one: such a frame is dropped.
bool CrossesWrap(unsigned aSeq, const std::vector<Bytes>& aPieces) {
    return aSeq + aPieces.size() > 0x10000;
}

/// The bytes of as many packets as a frame that begins with that one has, each the next and of one time.
Bytes FrameAt(const std::vector<Arrival>& aArrivals, std::size_t aPlace, std::size_t aSize) {
    Bytes lFrame = aArrivals.at(aPlace).mPayload;
    for (std::size_t lIdx = aPlace + 1; lFrame.size() < aSize; ++lIdx) {
        FUZZ_CHECK(lIdx < aArrivals.size());
        const Arrival& lBefore = aArrivals[lIdx - 1];
        const Arrival& lArrival = aArrivals[lIdx];
        FUZZ_CHECK(static_cast<std::uint16_t>(lBefore.mSeq + 1) == lArrival.mSeq);
        FUZZ_CHECK(lBefore.mTimestamp == lArrival.mTimestamp);
        lFrame.insert(lFrame.end(), lArrival.mPayload.begin(), lArrival.mPayload.end());
    }
    return lFrame;
}

/// A frame is delivered with the packet behind it, and is packets as they came, none of them twice.
void TakeAnythingTolerantly(Input& aInput) {
    const bool lFlushes = aInput.Flag();
    const std::vector<Arrival> lArrivals = ReadArrivals(aInput);
    Chain lChain(kFormat, "", true);
    for (const Arrival& lArrival : lArrivals) {
        FUZZ_CHECK(lChain.Push(lArrival) <= 1);
    }
    if (lFlushes) { lChain.Flush(); }
    lChain.EndStream();
    std::size_t lDelivered = 0;
    std::size_t lLast = 0;
    for (const PacketPtr& lSample : lChain.Samples()) {
        const Bytes lBytes = Chain::BytesOf(lSample);
        const std::size_t lPlace = Chain::PlaceOf(lSample);
        FUZZ_CHECK(BeginsWithStartCode(lBytes) && (0 == lDelivered || lLast < lPlace));
        FUZZ_CHECK(FrameAt(lArrivals, lPlace, lBytes.size()) == lBytes);
        lLast = lPlace;
        lDelivered += lBytes.size();
    }
    FUZZ_CHECK(lDelivered <= TotalSize(lArrivals));
}

/// Frames with the marker on their first packet, on their last, or on both.
void ComeThroughTolerantly(Input& aInput) {
    Chain lChain(kFormat, "", true);
    Arrival lArrival;
    lArrival.mSeq = static_cast<std::uint16_t>(aInput.Word16());
    std::vector<Bytes> lFrames;
    bool lIsWhole = true;
    while (!aInput.Empty() && lIsWhole) {
        const std::uint8_t lSize = static_cast<std::uint8_t>(std::max<unsigned>(aInput.Byte(), 3));
        const unsigned lMarkers = aInput.Byte();
        Bytes lFrame = {0, 0, 1};
        const Bytes lData = aInput.Chunk();
        lFrame.insert(lFrame.end(), lData.begin(), lData.end());
        const std::vector<Bytes> lPieces = Cut(lFrame, {lSize});
        lIsWhole = !HasStartCodeInside(lPieces);
        if (!lIsWhole) { break; }
        lFrames.push_back(lFrame);
        for (std::size_t lIdx = 0; lIdx < lPieces.size(); ++lIdx) {
            lArrival.mPayload = lPieces[lIdx];
            lArrival.mMarker =
                (0 == lIdx && 0 != (lMarkers & 1)) || (lPieces.size() == lIdx + 1 && 0 != (lMarkers & 2));
            lChain.Push(lArrival);
            ++lArrival.mSeq;
        }
        ++lArrival.mTimestamp;
    }
    // What comes behind the last frame shows that it is whole.
    lArrival.mPayload = {0, 0, 1};
    lArrival.mMarker = false;
    lChain.Push(lArrival);
    FUZZ_CHECK(lChain.Samples().size() == lFrames.size());
    for (std::size_t lIdx = 0; lIdx < lFrames.size(); ++lIdx) {
        FUZZ_CHECK(Chain::BytesOf(lChain.Samples()[lIdx]) == lFrames[lIdx]);
    }
}

void ComeThrough(Input& aInput) {
    Chain lChain(kFormat, "");
    unsigned lSeq = aInput.Word16();
    while (!aInput.Empty()) {
        const std::uint8_t lSize = static_cast<std::uint8_t>(std::max<unsigned>(aInput.Byte(), 3));
        const unsigned lLost = aInput.Byte();
        Bytes lFrame = {0, 0, 1};
        const Bytes lData = aInput.Chunk();
        lFrame.insert(lFrame.end(), lData.begin(), lData.end());
        const std::vector<Bytes> lPieces = Cut(lFrame, {lSize});
        if (HasStartCodeInside(lPieces) || CrossesWrap(lSeq, lPieces)) { return; }

        std::size_t lSamples = 0;
        for (std::size_t lIdx = 0; lIdx < lPieces.size(); ++lIdx) {
            Arrival lArrival;
            lArrival.mPayload = lPieces[lIdx];
            lArrival.mSeq = static_cast<std::uint16_t>(lSeq++);
            lArrival.mMarker = lPieces.size() == lIdx + 1;
            if (lIdx != lLost) { lSamples += lChain.Push(lArrival); }
        }
        // Without its first packet a frame is no more either, unless an earlier one was left with the number before.
        if (lLost < lPieces.size()) { return FUZZ_CHECK(lSamples == 0); }
        FUZZ_CHECK(1 == lSamples && Chain::BytesOf(lChain.Samples().back()) == lFrame);
    }
}

}  // namespace

void Run(Input& aInput) {
    switch (aInput.Byte() & 3) {
        case 0: return TakeAnything(aInput);
        case 1: return ComeThrough(aInput);
        case 2: return TakeAnythingTolerantly(aInput);
        default: return ComeThroughTolerantly(aInput);
    }
}

}  // namespace Fuzz
