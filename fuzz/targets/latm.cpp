// MP4A-LATM: each packet with the marker stands for itself, and its samples with their lengths in front are its
// payload, up to the first length that can't be.

#include "support/Depacketizing.hpp"

namespace Fuzz {

/// A sample of one byte takes two of the payload, and is an object.
const Bounds kBounds{16384, 512};

namespace {

Bytes WithLength(const Bytes& aSample) {
    Bytes lMux(aSample.size() / 255, 0xFF);
    lMux.push_back(static_cast<std::uint8_t>(aSample.size() % 255));
    lMux.insert(lMux.end(), aSample.begin(), aSample.end());
    return lMux;
}

/// The next length is 0, or runs past the end.
bool IsEnd(Input aRest) {
    std::size_t lLength = 0;
    while (!aRest.Empty()) {
        const std::uint8_t lByte = aRest.Byte();
        lLength += lByte;
        if (0xFF != lByte) { break; }
    }
    return 0 == lLength || lLength > aRest.Left();
}

void CheckPacket(const Chain& aChain, std::size_t aFirst, const Bytes& aPayload, std::size_t aPlace) {
    Bytes lMux;
    for (std::size_t lIdx = aFirst; lIdx < aChain.Samples().size(); ++lIdx) {
        const PacketPtr& lSample = aChain.Samples()[lIdx];
        FUZZ_CHECK(0 != lSample->Size() && Chain::PlaceOf(lSample) == aPlace);
        const Bytes lPart = WithLength(Chain::BytesOf(lSample));
        lMux.insert(lMux.end(), lPart.begin(), lPart.end());
    }
    FUZZ_CHECK(lMux.size() <= aPayload.size() && std::equal(lMux.begin(), lMux.end(), aPayload.begin()));
    FUZZ_CHECK(IsEnd(Input(aPayload.data() + lMux.size(), aPayload.size() - lMux.size())));
}

}  // namespace

void Run(Input& aInput) {
    const std::vector<Arrival> lArrivals = ReadArrivals(aInput);
    Chain lChain("MP4A-LATM", "");
    for (std::size_t lIdx = 0; lIdx < lArrivals.size(); ++lIdx) {
        const std::size_t lBefore = lChain.Samples().size();
        lChain.Push(lArrivals[lIdx]);
        if (lArrivals[lIdx].mMarker) {
            CheckPacket(lChain, lBefore, lArrivals[lIdx].mPayload, lIdx);
        } else {
            FUZZ_CHECK(lBefore == lChain.Samples().size());
        }
    }
    const std::size_t lDelivered = lChain.Samples().size();
    lChain.EndStream();
    lChain.Flush();
    FUZZ_CHECK(lDelivered == lChain.Samples().size());
}

}  // namespace Fuzz
