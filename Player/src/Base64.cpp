#include "Base64.hpp"

#include <cstring>

#include "Player/Types.hpp"

namespace Player::Base64 {

namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr UInt kBitsPerDigit = 6;
constexpr UInt kBitsPerByte = 8;

}  // namespace

std::string Encode(const std::string& aBytes) {
    std::string lText;
    for (std::size_t i = 0; i < aBytes.size(); i += 3) {
        UInt lGroup = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            lGroup = lGroup << kBitsPerByte | (i + j < aBytes.size() ? static_cast<Byte>(aBytes[i + j]) : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            lText += i + j <= aBytes.size() ? kDigits[lGroup >> (18 - kBitsPerDigit * j) & 63U] : '=';
        }
    }
    return lText;
}

std::optional<std::string> Decode(const std::string& aText) {
    std::string lBytes;
    UInt lPending = 0;
    UInt lBits = 0;
    const std::size_t lEnd = aText.find_last_not_of('=') + 1;
    for (std::size_t i = 0; i < lEnd; ++i) {
        const char* const lDigit = '\0' == aText[i] ? nullptr : std::strchr(kDigits, aText[i]);
        if (nullptr == lDigit) { return std::nullopt; }
        lPending = (lPending << kBitsPerDigit | static_cast<UInt>(lDigit - kDigits)) & 0xFFFFU;
        lBits += kBitsPerDigit;
        if (lBits < kBitsPerByte) { continue; }
        lBits -= kBitsPerByte;
        lBytes += static_cast<char>(lPending >> lBits & 0xFFU);
    }
    return lBytes;
}

}  // namespace Player::Base64
