#include "Parser/Base64.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace Parser {
namespace {

std::string Encoded(const std::string& aBytes) {
    const std::vector<unsigned char> lBytes(aBytes.begin(), aBytes.end());
    return Base64Encode(lBytes.data(), static_cast<unsigned int>(lBytes.size()));
}

TEST(Base64, EncodesWithPadding) {
    EXPECT_EQ("", Encoded(""));
    EXPECT_EQ("Zg==", Encoded("f"));
    EXPECT_EQ("Zm8=", Encoded("fo"));
    EXPECT_EQ("Zm9v", Encoded("foo"));
    EXPECT_EQ("Zm9vYg==", Encoded("foob"));
    EXPECT_EQ("Zm9vYmE=", Encoded("fooba"));
    EXPECT_EQ("Zm9vYmFy", Encoded("foobar"));
    EXPECT_EQ("AAAA", Encoded(std::string(3, '\0')));
    EXPECT_EQ("////", Encoded(std::string(3, '\xff')));
    EXPECT_EQ("+/8=", Encoded("\xfb\xff"));
    EXPECT_EQ("", Base64Encode(nullptr, 0));
}

TEST(Base64, DecodesAParameterSet) {
    EXPECT_EQ(std::string("\x67\x42\x00\x1e", 4), Base64Decode("Z0IAHg=="));
}

TEST(Base64, StopsAtTheFirstForeignCharacter) {
    EXPECT_EQ("\x69", Base64Decode("ab!cd"));
    EXPECT_EQ("foo", Base64Decode("Zm9v\r\nYmFy"));
    EXPECT_EQ("foo", Base64Decode("Zm9v YmFy"));
    EXPECT_EQ("f", Base64Decode("Zm,9v"));
    EXPECT_EQ("foo", Base64Decode("Zm9v-_-_"));  // the alphabet for URLs is another one
    EXPECT_EQ("foo", Base64Decode(std::string("Zm9v\0YmFy", 9)));
    EXPECT_EQ("foo", Base64Decode("Zm9v\xe9mFy"));
    EXPECT_EQ("", Base64Decode("!Zm9v"));
}

TEST(Base64, StopsAtTheFirstPadding) {
    EXPECT_EQ("fo", Base64Decode("Zm8=Zm9v"));
    EXPECT_EQ("f", Base64Decode("Zg==Zm9v"));
    EXPECT_EQ("", Base64Decode("=Zm9v"));
}

TEST(Base64, APartialGroupGivesOneByteLessThanItHasCharacters) {
    EXPECT_EQ("", Base64Decode(""));
    EXPECT_EQ("", Base64Decode("Z"));
    EXPECT_EQ("f", Base64Decode("Zg"));
    EXPECT_EQ("fo", Base64Decode("Zm8"));
    EXPECT_EQ("foo", Base64Decode("Zm9v"));
    EXPECT_EQ("foo", Base64Decode("Zm9vY"));
    EXPECT_EQ("foob", Base64Decode("Zm9vYg"));
    EXPECT_EQ("f", Base64Decode("Zv"));  // bits that fill no byte are dropped whatever they are
    EXPECT_EQ("fo", Base64Decode("Zm/"));
}

TEST(Base64, EveryByteInEveryPlaceComesBack) {
    std::string lBytes(256, '\0');
    std::iota(lBytes.begin(), lBytes.end(), '\0');
    for (std::size_t lSkip = 0; lSkip < lBytes.size(); ++lSkip) {
        const std::string lPart = lBytes.substr(lSkip);
        const std::string lText = Encoded(lPart);
        EXPECT_EQ((lPart.size() + 2) / 3 * 4, lText.size());
        EXPECT_EQ(lPart, Base64Decode(lText));
        EXPECT_EQ(lPart, Base64Decode(lText.substr(0, lText.find('='))));
    }
}

TEST(Base64, TheAlphabetIsThatOfTheEncoder) {
    const std::string lAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    unsigned int lCount = 0;
    for (unsigned int lChar = 0; lChar < 256; ++lChar) {
        const bool lKnown = std::string::npos != lAlphabet.find(static_cast<char>(lChar));
        EXPECT_EQ(lKnown, IsBase64(static_cast<unsigned char>(lChar))) << lChar;
        lCount += lKnown ? 1 : 0;
    }
    EXPECT_EQ(64U, lCount);
    for (std::size_t lIdx = 0; lIdx < lAlphabet.size(); ++lIdx) {
        // Six bits in the upper places of a byte, followed by two zero bits.
        EXPECT_EQ(std::string(1, static_cast<char>(lIdx << 2)), Base64Decode(std::string(1, lAlphabet[lIdx]) + "A"));
    }
}

}  // namespace
}  // namespace Parser
