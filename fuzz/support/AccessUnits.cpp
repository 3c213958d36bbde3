#include "support/AccessUnits.hpp"

#include <algorithm>
#include <array>

namespace Fuzz {

namespace {

/// AU headers may claim the same bytes again; a packet that gave this many times its size gives no more. One unit more
/// may be on its way then.
constexpr std::size_t kMostCopies = 17;

using Census = std::array<bool, 256>;

Census CensusOf(const std::vector<Arrival>& aArrivals) {
    Census lCensus{};
    for (const Arrival& lArrival : aArrivals) {
        for (const std::uint8_t lByte : lArrival.mPayload) {
            lCensus[lByte] = true;
        }
    }
    return lCensus;
}

}  // namespace

std::string FieldWidths::Text() const {
    return "sizelength=" + std::to_string(mSize) + ";indexLength=" + std::to_string(mIndex) +
           "; indexdeltalength=" + std::to_string(mIndexDelta) + ";CTSDeltaLength=" + std::to_string(mCTSDelta) +
           ";dtsdeltalength=" + std::to_string(mDTSDelta) + ";streamstateindication=" + std::to_string(mStreamState) +
           ";randomaccessindication=" + (mHasRandomAccess ? "1" : "0");
}

FieldWidths ReadWidths(Input& aInput) {
    FieldWidths lWidths;
    lWidths.mSize = 1 + aInput.Below(16);
    lWidths.mIndex = aInput.Below(17);
    lWidths.mIndexDelta = aInput.Below(17);
    lWidths.mCTSDelta = aInput.Below(33);
    lWidths.mDTSDelta = aInput.Below(33);
    lWidths.mStreamState = aInput.Below(33);
    lWidths.mHasRandomAccess = aInput.Flag();
    return lWidths;
}

void AUHeaderWriter::Put(unsigned aBits, std::uint32_t aValue) {
    while (0 != aBits--) {
        if (0 == mBits % 8) { mBytes.push_back(0); }
        const unsigned lBit = aBits < 32 ? aValue >> aBits & 1 : 0;
        mBytes.back() = static_cast<std::uint8_t>(mBytes.back() | lBit << (7 - mBits % 8));
        ++mBits;
    }
}

void AUHeaderWriter::Header(Input& aChoice, std::uint32_t aSize, std::uint32_t aIndexOrDelta, bool aIsFirst) {
    Put(mWidths.mSize, aSize);
    if (0 != mWidths.mIndex) { Put(aIsFirst ? mWidths.mIndex : mWidths.mIndexDelta, aIndexOrDelta); }
    for (const unsigned lWidth : {mWidths.mCTSDelta, mWidths.mDTSDelta}) {
        if (0 == lWidth) { continue; }
        const bool lIsThere = aChoice.Flag();
        Put(1, lIsThere);
        if (lIsThere) { Put(lWidth, aChoice.Word32()); }
    }
    if (mWidths.mHasRandomAccess) { Put(1, aChoice.Below(2)); }
    Put(mWidths.mStreamState, aChoice.Word32());
}

Bytes AUHeaderWriter::Payload(const Bytes& aData) const {
    Bytes lPayload(2 + mBytes.size() + aData.size());
    lPayload[0] = static_cast<std::uint8_t>(mBits >> 8);
    lPayload[1] = static_cast<std::uint8_t>(mBits);
    std::copy(aData.begin(), aData.end(), std::copy(mBytes.begin(), mBytes.end(), lPayload.begin() + 2));
    return lPayload;
}

void TakeAnyAccessUnits(Input& aInput, const char* aFormat, const std::string& aFmtParams) {
    const bool lFlushes = aInput.Flag();
    const std::vector<Arrival> lArrivals = ReadArrivals(aInput);
    Chain lChain(aFormat, aFmtParams);
    for (const Arrival& lArrival : lArrivals) {
        const std::size_t lSamples = lChain.Push(lArrival);
        FUZZ_CHECK(lArrival.mMarker || 0 == lSamples);
    }
    if (lFlushes) { lChain.Flush(); }
    const std::size_t lSamples = lChain.Samples().size();
    lChain.EndStream();
    FUZZ_CHECK(lSamples == lChain.Samples().size());

    const Census lReceived = CensusOf(lArrivals);
    std::size_t lDelivered = 0;
    std::size_t lLast = 0;
    for (const PacketPtr& lSample : lChain.Samples()) {
        lDelivered += lSample->Size();
        FUZZ_CHECK(lLast <= Chain::PlaceOf(lSample) && Chain::PlaceOf(lSample) < lArrivals.size());
        lLast = Chain::PlaceOf(lSample);
        for (const std::uint8_t lByte : Chain::BytesOf(lSample)) {
            FUZZ_CHECK(lReceived[lByte]);
        }
    }
    FUZZ_CHECK(lDelivered <= kMostCopies * TotalSize(lArrivals));
}

}  // namespace Fuzz
