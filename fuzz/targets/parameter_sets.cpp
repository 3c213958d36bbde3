// Base64 and the H.264 parameter sets after it: text and bytes are each other's inverse, and the values that a parser
// gives out stand in the sequence parameter set.

#include "Parser/Base64.hpp"
#include "Parser/SpsPpsParser.hpp"
#include "support/Target.hpp"

namespace Fuzz {

/// The records of the two sets have fixed sizes; a slice group map takes a byte for each of its bits.
const Bounds kBounds{32768, 64};

namespace {

std::string Encode(const std::string& aBytes) {
    return Parser::Base64Encode(reinterpret_cast<const unsigned char*>(aBytes.data()),
                                static_cast<unsigned>(aBytes.size()));
}

std::string CheckBase64(const std::string& aText) {
    const std::string lBytes = Parser::Base64Decode(aText);
    std::size_t lValid = 0;
    while (lValid < aText.size() && Parser::IsBase64(static_cast<unsigned char>(aText[lValid]))) {
        ++lValid;
    }
    FUZZ_CHECK(lBytes.size() == lValid * 6 / 8);
    const std::string lAgain = Encode(lBytes);
    FUZZ_CHECK(lAgain.size() == (lBytes.size() + 2) / 3 * 4);
    FUZZ_CHECK(lBytes == Parser::Base64Decode(lAgain));
    // All but the last group, which may have had stray bits.
    FUZZ_CHECK(0 == lAgain.compare(0, lValid / 4 * 4, aText, 0, lValid / 4 * 4));
    // Any bytes come through.
    FUZZ_CHECK(aText == Parser::Base64Decode(Encode(aText)));
    return lBytes;
}

void CheckParser(const std::string& aSps, const std::string& aPps) {
    const Parser::SpsPpsParser lParser(aSps, aPps);
    FUZZ_CHECK(0 == lParser.GetWidth() % 16 && 0 == lParser.GetHeight() % 16);
    const bool lIsEmpty = 0 == lParser.GetWidth() && 0 == lParser.GetHeight() && 0 == lParser.GetProfileIndication() &&
                          0 == lParser.GetLevelIndication();
    if (lIsEmpty) { return; }
    FUZZ_CHECK(aSps.size() > 3 && !aPps.empty());
    FUZZ_CHECK(static_cast<unsigned char>(aSps[1]) == lParser.GetProfileIndication());
    // Unless an escape stands in its place.
    if (3 != aSps[3]) { FUZZ_CHECK(static_cast<unsigned char>(aSps[3]) == lParser.GetLevelIndication()); }
    // What is cut off is not made up.
    const Parser::SpsPpsParser lWithoutPps(aSps, aPps.substr(0, 1));
    FUZZ_CHECK(0 == lWithoutPps.GetProfileIndication());
}

}  // namespace

void Run(Input& aInput) {
    if (aInput.Flag()) {
        const std::string lSps = CheckBase64(AsText(aInput.Chunk()));
        const std::string lPps = CheckBase64(AsText(aInput.Rest()));
        return CheckParser(lSps, lPps);
    }
    const std::string lSps = AsText(aInput.Chunk());
    CheckParser(lSps, AsText(aInput.Rest()));
}

}  // namespace Fuzz
