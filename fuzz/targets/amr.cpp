// AMR: as many frames as the table of contents has entries with data, each of the size that its type has, and together
// they are the payload after the table, filled up with zeros where it ends early.

#include <algorithm>

#include "support/Depacketizing.hpp"

namespace Fuzz {

/// An entry of one byte asks for a frame of up to 31 bytes, and a frame is an object.
const Bounds kBounds{16384, 512};

namespace {

constexpr unsigned kSizes[] = {12, 13, 15, 17, 19, 20, 26, 31, 5, 6, 5, 5, 0, 0, 0, 0};

void CheckPacket(const Chain& aChain, std::size_t aFirst, const Bytes& aPayload, std::size_t aPlace) {
    Input lPayload(aPayload.data(), aPayload.size());
    lPayload.Byte();
    Bytes lSpeech;
    std::size_t lNext = aFirst;
    for (bool lMore = true; lMore && !lPayload.Empty();) {
        const std::uint8_t lEntry = lPayload.Byte();
        lMore = 0 != (lEntry & 0x80);
        const unsigned lSize = kSizes[lEntry >> 3 & 0x0F];
        if (0 == lSize) { continue; }
        FUZZ_CHECK(lNext < aChain.Samples().size());
        const PacketPtr& lSample = aChain.Samples()[lNext++];
        FUZZ_CHECK(lSize == lSample->Size() && aPlace == Chain::PlaceOf(lSample));
        lSpeech.insert(lSpeech.end(), lSample->Begin(), lSample->End());
    }
    FUZZ_CHECK(lNext == aChain.Samples().size());
    Bytes lData = lPayload.Rest();
    lData.resize(lSpeech.size());
    FUZZ_CHECK(lData == lSpeech);
}

}  // namespace

void Run(Input& aInput) {
    const std::vector<Arrival> lArrivals = ReadArrivals(aInput);
    Chain lChain("AMR", "");
    for (std::size_t lIdx = 0; lIdx < lArrivals.size(); ++lIdx) {
        const std::size_t lBefore = lChain.Samples().size();
        lChain.Push(lArrivals[lIdx]);
        CheckPacket(lChain, lBefore, lArrivals[lIdx].mPayload, lIdx);
    }
    lChain.EndStream();
    lChain.Flush();
}

}  // namespace Fuzz
