// The configuration of an MPEG-4 visual stream: sizes fit their fields, come only after a start code, and a layer that
// was written by hand is read as it was written.

#include "Parser/ParserMpeg4.hpp"
#include "support/BitWriter.hpp"
#include "support/Target.hpp"

namespace Fuzz {

const Bounds kBounds{4096, 8};

namespace {

constexpr unsigned kSideLimit = 1U << 13;

struct Size {
    unsigned mWidth;
    unsigned mHeight;
};

Size Parse(const Bytes& aBytes) {
    Parser::ParserMpeg4 lParser(aBytes.data(), static_cast<unsigned>(aBytes.size()));
    lParser.Parse();
    FUZZ_CHECK(lParser.GetVOLWidth() < kSideLimit && lParser.GetVOLHeight() < kSideLimit);
    return {lParser.GetVOLWidth(), lParser.GetVOLHeight()};
}

bool HasStartCode(const Bytes& aBytes) {
    return std::string::npos != AsText(aBytes).find(std::string("\0\0\1", 3));
}

/// A rectangular video object layer with the optional fields that `aChoice` asks for.
Bytes WriteLayer(Input& aChoice, const Size& aSize) {
    TestSupport::BitWriter lOut;
    lOut.u(32, 0x00000120).u(1, aChoice.Below(2)).u(8, aChoice.Byte());
    const bool lHasIdentifier = aChoice.Flag();
    lOut.u(1, lHasIdentifier);
    if (lHasIdentifier) { lOut.u(4, aChoice.Below(16)).u(3, aChoice.Below(8)); }
    const unsigned lAspect = aChoice.Below(16);
    lOut.u(4, lAspect);
    if (15 == lAspect) { lOut.u(8, aChoice.Byte()).u(8, aChoice.Byte()); }
    const bool lHasControl = aChoice.Flag();
    lOut.u(1, lHasControl);
    if (lHasControl) {
        const bool lHasBufferModel = aChoice.Flag();
        lOut.u(2, 1).u(1, aChoice.Below(2)).u(1, lHasBufferModel);
        if (lHasBufferModel) {
            for (const unsigned lBits : {15U, 1U, 15U, 1U, 15U, 1U, 3U, 11U, 1U, 15U, 1U}) {
                lOut.u(lBits, aChoice.Word16());
            }
        }
    }
    lOut.u(2, 0).u(1, 1);  // rectangular
    const unsigned lResolution = aChoice.Word16();
    lOut.u(16, lResolution).u(1, 1);
    // An increment of no ticks would take a width of 32 bits.
    const bool lHasIncrement = aChoice.Flag() && 0 != lResolution;
    lOut.u(1, lHasIncrement);
    if (lHasIncrement) { lOut.u(Parser::myLog2(lResolution - 1) + 1, aChoice.Word16()); }
    lOut.u(1, 1).u(13, aSize.mWidth).u(1, 1).u(13, aSize.mHeight).u(1, 1);
    return lOut.All();
}

}  // namespace

void Run(Input& aInput) {
    if (aInput.Flag()) {
        const Size lWritten{aInput.Word16() % kSideLimit, aInput.Word16() % kSideLimit};
        const Size lRead = Parse(WriteLayer(aInput, lWritten));
        FUZZ_CHECK(lRead.mWidth == lWritten.mWidth && lRead.mHeight == lWritten.mHeight);
        return;
    }
    const Bytes lBytes = aInput.Rest();
    const Size lSize = Parse(lBytes);
    FUZZ_CHECK(HasStartCode(lBytes) || (0 == lSize.mWidth && 0 == lSize.mHeight));
}

}  // namespace Fuzz
