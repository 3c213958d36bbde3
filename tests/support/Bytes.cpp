#include "support/Bytes.hpp"

#include <cctype>
#include <cstdio>
#include <stdexcept>

namespace TestSupport {

std::string Hex(const Bytes& aBytes) {
    std::string lText;
    for (const auto lByte : aBytes) {
        char lPair[4];
        std::snprintf(lPair, sizeof(lPair), "%02x", lByte);
        lText += lText.empty() ? "" : " ";
        lText += lPair;
    }
    return lText;
}

Bytes FromHex(const std::string& aText) {
    std::string lDigits;
    for (const char lChar : aText) {
        if (' ' == lChar) { continue; }
        if (0 == std::isxdigit(static_cast<unsigned char>(lChar))) {
            throw std::invalid_argument("not hexadecimal: " + aText);
        }
        lDigits += lChar;
    }
    if (0 != lDigits.size() % 2) { throw std::invalid_argument("odd number of hexadecimal digits: " + aText); }
    Bytes lBytes;
    for (std::size_t i = 0; i < lDigits.size(); i += 2) {
        lBytes.push_back(static_cast<std::uint8_t>(std::stoul(lDigits.substr(i, 2), nullptr, 16)));
    }
    return lBytes;
}

std::string Quoted(const std::string& aText) {
    std::string lText = "\"";
    for (const char lChar : aText) {
        switch (lChar) {
            case '\r': lText += "\\r"; break;
            case '\n': lText += "\\n"; break;
            case '\t': lText += "\\t"; break;
            default:
                if (0 != std::isprint(static_cast<unsigned char>(lChar))) {
                    lText += lChar;
                } else {
                    char lEscape[8];
                    std::snprintf(lEscape, sizeof(lEscape), "\\x%02x", static_cast<unsigned char>(lChar));
                    lText += lEscape;
                }
        }
    }
    return lText + "\"";
}

}  // namespace TestSupport
