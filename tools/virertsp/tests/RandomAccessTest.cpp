#include "writers/RandomAccess.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Virertsp {
namespace {

using Bytes = std::vector<unsigned char>;

// NAL units of H.264, header byte first.
// clang-format off
const Bytes kParameters = {0x68, 0xCE, 0x3C, 0x80};
const Bytes kRefresh = {0x65, 0x88, 0x84};          // first macroblock 0, slice type 7
const Bytes kIntra = {0x41, 0x88, 0x84};            // first macroblock 0, slice type 7
const Bytes kIntraOfMixed = {0x41, 0xB0, 0x84};     // first macroblock 0, slice type 2
const Bytes kIntraBelow = {0x41, 0x50, 0x84};       // first macroblock 1, slice type 9: switching intra
const Bytes kSecondIntra = {0x41, 0x42, 0x21};      // first macroblock 1, slice type 7
const Bytes kPredicted = {0x41, 0x9A, 0x02};        // first macroblock 0, slice type 5
const Bytes kSecondPredicted = {0x41, 0x46, 0x81};  // first macroblock 1, slice type 5
const Bytes kRecovery = {0x06, 0x06, 0x01, 0xC4, 0x80};       // recovery_frame_cnt 0, exact_match 1
const Bytes kLaterRecovery = {0x06, 0x06, 0x01, 0x44, 0x80};  // recovery_frame_cnt 1
const Bytes kOtherMessage = {0x06, 0x05, 0x01, 0xC4, 0x80};
// Behind another message, whose five bytes have one of emulation prevention between them.
const Bytes kSecondRecovery = {0x06, 0x05, 0x05, 0x00, 0x00, 0x03, 0x01, 0xAA, 0xBB, 0x06, 0x01, 0xC4, 0x80};
// Of type 255 + 1 and of 255 + 2 bytes.
Bytes LongMessageThenRecovery() {
    Bytes lBytes = {0x06, 0xFF, 0x01, 0xFF, 0x02};
    lBytes.insert(lBytes.end(), 257, 0x06);
    lBytes.insert(lBytes.end(), {0x06, 0x01, 0xC4, 0x80});
    return lBytes;
}
// clang-format on

std::string Sample(const std::vector<Bytes>& aUnits) {
    std::string lSample;
    for (const Bytes& lUnit : aUnits) {
        lSample += {0, 0, static_cast<char>(lUnit.size() >> 8), static_cast<char>(lUnit.size())};
        lSample.append(lUnit.begin(), lUnit.end());
    }
    return lSample;
}

TEST(RandomAccessTest, H264) {
    struct Case {
        const char* mName;
        std::vector<Bytes> mUnits;
        bool mIs;
    };
    for (const Case& lCase : {
             Case{"nothing", {}, false},
             Case{"instantaneous refresh", {kRefresh}, true},
             Case{"refresh after others", {kParameters, kOtherMessage, kRefresh}, true},
             Case{"intra, not announced", {kIntra}, false},
             Case{"intra, announced", {kRecovery, kIntra}, true},
             Case{"intra of a mixed picture's type", {kRecovery, kIntraOfMixed}, true},
             Case{"announced behind parameters", {kParameters, kRecovery, kIntra}, true},
             Case{"in one unit with another message", {kSecondRecovery, kIntra}, true},
             Case{"behind a long message", {LongMessageThenRecovery(), kIntra}, true},
             Case{"announced and nothing else", {kRecovery}, false},
             Case{"announced for later", {kLaterRecovery, kIntra}, false},
             Case{"another message", {kOtherMessage, kIntra}, false},
             Case{"announced too late", {kIntra, kRecovery}, false},
             Case{"predicted", {kRecovery, kPredicted}, false},
             Case{"two slices", {kRecovery, kIntra, kSecondIntra}, true},
             Case{"second slice predicted", {kRecovery, kIntra, kSecondPredicted}, false},
             Case{"second slice switching", {kRecovery, kIntra, kIntraBelow}, false},
             Case{"second field predicted", {kRecovery, kIntra, kSecondIntra, kPredicted, kSecondPredicted}, true},
         }) {
        EXPECT_EQ(lCase.mIs, IsRandomAccess(Coding::kH264, Sample(lCase.mUnits))) << lCase.mName;
    }
}

TEST(RandomAccessTest, H264CutShortAnywhere) {
    const std::string lWhole = Sample({kSecondRecovery, kIntra});
    for (std::size_t lSize = 0; lSize <= lWhole.size(); ++lSize) {
        // In a block of its own, whose end a sanitizer guards. The slice's type is in the last byte but one.
        const std::vector<char> lBlock(lWhole.begin(), lWhole.begin() + static_cast<std::ptrdiff_t>(lSize));
        EXPECT_EQ(lSize + 1 >= lWhole.size(), IsRandomAccess(Coding::kH264, {lBlock.data(), lBlock.size()})) << lSize;
    }
}

TEST(RandomAccessTest, H264Hostile) {
    const Bytes lEndless(300, 0xFF);
    Bytes lMessage = {0x06};
    lMessage.insert(lMessage.end(), lEndless.begin(), lEndless.end());
    const Bytes lNoSize = {0x06, 0x06};
    const Bytes lEmpty = {0x06, 0x06, 0x00};
    const Bytes lTooLong = {0x06, 0x06, 0x7F, 0x80};
    Bytes lZeros = {0x41};
    lZeros.insert(lZeros.end(), 100, 0x00);
    for (const Bytes& lUnit : {lMessage, lNoSize, lEmpty, lTooLong}) {
        EXPECT_FALSE(IsRandomAccess(Coding::kH264, Sample({lUnit, kIntra})));
    }
    EXPECT_FALSE(IsRandomAccess(Coding::kH264, Sample({kRecovery, lZeros})));
    EXPECT_FALSE(IsRandomAccess(Coding::kH264, Sample({kRecovery, {0x41}})));
    EXPECT_FALSE(IsRandomAccess(Coding::kH264, std::string(64, '\0')));
    EXPECT_TRUE(IsRandomAccess(Coding::kH264, std::string("\0\0\0\0\0\0\0\1\x65", 9)));
}

TEST(RandomAccessTest, VisualAndSound) {
    EXPECT_TRUE(IsRandomAccess(Coding::kVisual, std::string_view("\0\0\1\xB6\0", 5)));
    EXPECT_FALSE(IsRandomAccess(Coding::kVisual, std::string_view("\0\0\1\xB6\x40", 5)));
    EXPECT_FALSE(IsRandomAccess(Coding::kVisual, std::string_view("\0\0\1\xB6", 4)));
    EXPECT_TRUE(IsRandomAccess(Coding::kSound, "x"));
}

}  // namespace
}  // namespace Virertsp
