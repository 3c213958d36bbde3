#include "Parser/Base64.hpp"

#include "Parser/Types.hpp"

namespace Parser {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr UInt kForeign = 64;

/// Place of a character in the alphabet, `kForeign` when it has none.
UInt ValueOf(unsigned char c) {
    if ('A' <= c && c <= 'Z') { return c - UInt{'A'}; }
    if ('a' <= c && c <= 'z') { return c - UInt{'a'} + 26; }
    if ('0' <= c && c <= '9') { return c - UInt{'0'} + 52; }
    if ('+' == c) { return 62; }
    return '/' == c ? 63 : kForeign;
}

/// The character for the six bits that end `aShift` bits above the lowest.
char CharAt(UInt aBits, UInt aShift) {
    return kAlphabet[aBits >> aShift & 0x3f];
}

}  // namespace

bool IsBase64(unsigned char c) {
    return kForeign != ValueOf(c);
}

std::string Base64Encode(const unsigned char* aData, unsigned int aSize) {
    std::string lText;
    lText.reserve((std::size_t{aSize} + 2) / 3 * 4);
    for (unsigned int lPos = 0; lPos < aSize;) {
        const unsigned int lLeft = aSize - lPos;
        const UInt lBits = UInt{aData[lPos]} << 16 | (lLeft > 1 ? UInt{aData[lPos + 1]} << 8 : 0) |
                           (lLeft > 2 ? UInt{aData[lPos + 2]} : 0);
        lText += CharAt(lBits, 18);
        lText += CharAt(lBits, 12);
        lText += lLeft > 1 ? CharAt(lBits, 6) : '=';
        lText += lLeft > 2 ? CharAt(lBits, 0) : '=';
        lPos += lLeft > 2 ? 3 : lLeft;
    }
    return lText;
}

std::string Base64Decode(const std::string& aText) {
    std::string lBytes;
    lBytes.reserve(aText.size() / 4 * 3 + 2);
    UInt lBits = 0;
    UInt lCount = 0;
    for (const char c : aText) {
        const UInt lValue = ValueOf(static_cast<unsigned char>(c));
        if (kForeign == lValue) { break; }
        lBits = (lBits & 0x3f) << 6 | lValue;  // older bits went into a byte before
        lCount += 6;
        if (lCount < 8) { continue; }
        lCount -= 8;
        lBytes += static_cast<char>(lBits >> lCount & 0xff);
    }
    return lBytes;
}

}  // namespace Parser
