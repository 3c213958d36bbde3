// enc-mpeg4-generic: what stands before an AU header is stepped over, whatever of it is there; one unit comes out of a
// packet, and of a picture all that came up to the marker.

#include "support/AccessUnits.hpp"

namespace Fuzz {

const Bounds kBounds{16384, 2048};

namespace {

constexpr char kFormat[] = "enc-mpeg4-generic";

/// The fields of the encryption, in bytes, and how they are announced.
struct Encryption {
    bool mHasFlag = false;
    unsigned mVector = 0;
    unsigned mKeyIndicator = 0;

    std::string Text() const {
        return std::string(";ismarypselectiveencryption=") + (mHasFlag ? "1" : "0") +
               ";isamcrypivlength=" + std::to_string(mVector) +
               ";ismacrypkeyindicatorlength=" + std::to_string(mKeyIndicator);
    }
    void Write(Input& aInput, AUHeaderWriter& aHeaders) const {
        if (mHasFlag) { aHeaders.Put(8, aInput.Byte()); }
        for (unsigned lByte = 0; lByte < mVector + mKeyIndicator; ++lByte) {
            aHeaders.Put(8, aInput.Byte());
        }
    }
};

Encryption ReadEncryption(Input& aInput) {
    Encryption lEncryption;
    lEncryption.mHasFlag = aInput.Flag();
    lEncryption.mVector = aInput.Below(17);
    lEncryption.mKeyIndicator = aInput.Below(9);
    return lEncryption;
}

/// Audio: one unit in a packet. Video: the units of all packets up to the marker are one.
void ComeThrough(Input& aInput) {
    const bool lIsVideo = aInput.Flag();
    FieldWidths lWidths = ReadWidths(aInput);
    lWidths.mSize = 16;
    const Encryption lEncryption = ReadEncryption(aInput);
    const std::string lMode = lIsVideo ? ";mode=mpeg4-video" : ";mode=AAC-hbr";
    Chain lChain(kFormat, lWidths.Text() + lEncryption.Text() + lMode);

    Bytes lExpected;
    while (!aInput.Empty()) {
        Bytes lUnit = aInput.Take(1 + aInput.Byte());
        lUnit.push_back(0xAA);
        AUHeaderWriter lHeaders(lWidths);
        lEncryption.Write(aInput, lHeaders);
        lHeaders.Header(aInput, static_cast<std::uint32_t>(lUnit.size()), aInput.Word16(), true);
        Arrival lArrival;
        lArrival.mPayload = lHeaders.Payload(lUnit);
        lArrival.mMarker = !lIsVideo || aInput.Flag();
        if (!lIsVideo) { lExpected.clear(); }
        lExpected.insert(lExpected.end(), lUnit.begin(), lUnit.end());
        FUZZ_CHECK(lChain.Push(lArrival) == (lArrival.mMarker ? 1 : 0));
        if (!lArrival.mMarker) { continue; }
        FUZZ_CHECK(lExpected == Chain::BytesOf(lChain.Samples().back()));
        lExpected.clear();
    }
}

}  // namespace

void Run(Input& aInput) {
    if (aInput.Flag()) { return ComeThrough(aInput); }
    const std::string lParams = AsText(aInput.Chunk());
    TakeAnyAccessUnits(aInput, kFormat, lParams);
}

}  // namespace Fuzz
