// mpeg4-generic: access units come out as they were written, joined or in fragments, whatever fields their headers
// have; of anything else no more comes out than bounded copies of what went in.

#include "Packets/MPEG4GenericSample.hpp"
#include "support/AccessUnits.hpp"

namespace Fuzz {

/// AU headers of one bit ask for a sample each, and every sample is an object; payloads may be copied 17 times.
const Bounds kBounds{16384, 2048};

namespace {

constexpr char kFormat[] = "mpeg4-generic";

/// Where the headers end is kept in 16 bits, the length field included.
bool FitsLengthField(const AUHeaderWriter& aHeaders) {
    return aHeaders.Bits() + 16 <= 0xFFFF;
}

std::uint32_t Masked(std::uint32_t aValue, unsigned aBits) {
    return aValue & ((1U << aBits) - 1);
}

/// Several units in one packet.
void ComeThroughJoined(Input& aInput, const FieldWidths& aWidths) {
    AUHeaderWriter lHeaders(aWidths);
    std::vector<Bytes> lUnits;
    std::vector<std::uint32_t> lIndices;
    Bytes lData;
    std::uint32_t lIndex = 0;
    while (!aInput.Empty()) {
        const std::uint32_t lSize = 1 + Masked(aInput.Byte(), aWidths.mSize);
        Bytes lUnit = aInput.Take(Masked(lSize, aWidths.mSize));
        // A size of 0 and the whole of several units are other cases.
        if (lUnit.empty()) { lUnit.push_back(0x55); }
        const bool lIsFirst = lUnits.empty();
        const std::uint32_t lNumber = Masked(aInput.Word16(), lIsFirst ? aWidths.mIndex : aWidths.mIndexDelta);
        lIndex = 0 == aWidths.mIndex ? 0 : Masked(lIsFirst ? lNumber : lIndex + lNumber + 1, aWidths.mIndex);
        lHeaders.Header(aInput, static_cast<std::uint32_t>(lUnit.size()), lNumber, lIsFirst);
        lData.insert(lData.end(), lUnit.begin(), lUnit.end());
        lUnits.push_back(lUnit);
        lIndices.push_back(lIndex);
    }
    if (lUnits.empty() || !FitsLengthField(lHeaders)) { return; }

    Chain lChain(kFormat, aWidths.Text());
    Arrival lArrival;
    lArrival.mPayload = lHeaders.Payload(lData);
    lArrival.mMarker = true;
    FUZZ_CHECK(lUnits.size() == lChain.Push(lArrival));
    for (std::size_t lIdx = 0; lIdx < lUnits.size(); ++lIdx) {
        const PacketPtr& lSample = lChain.Samples()[lIdx];
        FUZZ_CHECK(lUnits[lIdx] == Chain::BytesOf(lSample));
        const auto* const lUnit = dynamic_cast<const Player::Packets::MPEG4GenericSample*>(lSample.Ptr());
        FUZZ_CHECK(nullptr != lUnit && lIndices[lIdx] == lUnit->AUIndex());
    }
}

/// One unit in several packets, each of which tells the size of the whole.
void ComeThroughInFragments(Input& aInput, FieldWidths aWidths) {
    aWidths.mSize = 16;
    const std::uint8_t lPiece = static_cast<std::uint8_t>(1 + aInput.Below(200));
    const Bytes lUnit = aInput.Take(0xFFFF);
    if (lUnit.empty()) { return; }
    const std::vector<Bytes> lPieces = Cut(lUnit, {lPiece});
    Chain lChain(kFormat, aWidths.Text());
    for (std::size_t lIdx = 0; lIdx < lPieces.size(); ++lIdx) {
        AUHeaderWriter lHeaders(aWidths);
        lHeaders.Header(aInput, static_cast<std::uint32_t>(lUnit.size()), 0, true);
        Arrival lArrival;
        lArrival.mPayload = lHeaders.Payload(lPieces[lIdx]);
        lArrival.mMarker = lPieces.size() == lIdx + 1;
        FUZZ_CHECK(lChain.Push(lArrival) == (lArrival.mMarker ? 1 : 0));
    }
    FUZZ_CHECK(lUnit == Chain::BytesOf(lChain.Samples()[0]));
}

}  // namespace

void Run(Input& aInput) {
    switch (aInput.Below(4)) {
        case 0: {
            const std::string lParams = AsText(aInput.Chunk());
            return TakeAnyAccessUnits(aInput, kFormat, lParams);
        }
        case 1: {
            const FieldWidths lWidths = ReadWidths(aInput);
            const unsigned lAuxiliary = aInput.Below(33);
            return TakeAnyAccessUnits(aInput, kFormat,
                                      lWidths.Text() + ";auxiliaryDataSizeLength=" + std::to_string(lAuxiliary));
        }
        case 2: {
            const FieldWidths lWidths = ReadWidths(aInput);
            return ComeThroughJoined(aInput, lWidths);
        }
        default: {
            const FieldWidths lWidths = ReadWidths(aInput);
            return ComeThroughInFragments(aInput, lWidths);
        }
    }
}

}  // namespace Fuzz
