#include "NAL.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace Parser {
namespace {

using Bytes = std::vector<Byte>;

struct Unescaped {
    std::ptrdiff_t mEnd;
    Bytes mBytes;
};

Unescaped Unescape(Bytes aBytes, std::size_t aBegin = 0) {
    const std::ptrdiff_t lEnd = EBSPtoRBSP(aBytes.data(), aBytes.size(), aBegin);
    if (lEnd >= 0) { aBytes.resize(static_cast<std::size_t>(lEnd)); }
    return {lEnd, lEnd >= 0 ? aBytes : Bytes()};
}

TEST(EBSPtoRBSP, RemovesEmulationPrevention) {
    const struct {
        Bytes mIn, mOut;
    } kCases[] = {
        {{}, {}},
        {{0}, {0}},
        {{0, 0}, {0, 0}},
        {{1, 2, 3, 0, 3, 0}, {1, 2, 3, 0, 3, 0}},  // a single zero escapes nothing
        {{0, 0, 3, 0}, {0, 0, 0}},
        {{0, 0, 3, 1}, {0, 0, 1}},
        {{0, 0, 3, 2}, {0, 0, 2}},
        {{0, 0, 3, 3}, {0, 0, 3}},
        {{0, 0, 4}, {0, 0, 4}},  // needs no protection and has none
        {{0, 0, 0xff, 0, 0, 0x80}, {0, 0, 0xff, 0, 0, 0x80}},
        {{0, 0, 3, 0, 0, 3, 0, 0, 3, 1}, {0, 0, 0, 0, 0, 0, 1}},
        {{0, 0, 3, 0, 3, 0}, {0, 0, 0, 3, 0}},  // the zeros before the removed byte do not count on
        {{0, 0, 3, 3, 3}, {0, 0, 3, 3}},        // nor does the byte after it
        {{9, 0, 0, 3}, {9, 0, 0}},              // as the last byte it ends the data
        {{0, 0, 3, 0, 0, 3}, {0, 0, 0, 0}},
    };
    for (const auto& lCase : kCases) {
        const Unescaped lOut = Unescape(lCase.mIn);
        EXPECT_EQ(static_cast<std::ptrdiff_t>(lCase.mOut.size()), lOut.mEnd);
        EXPECT_EQ(lCase.mOut, lOut.mBytes);
    }
}

TEST(EBSPtoRBSP, RefusesWhatANalUnitCannotHold) {
    for (Byte lLow = 0; lLow < 3; ++lLow) {
        EXPECT_EQ(-1, Unescape({7, 0, 0, lLow}).mEnd) << int{lLow};
        EXPECT_EQ(-1, Unescape({7, 0, 0, lLow, 9}).mEnd) << int{lLow};
        EXPECT_EQ(-1, Unescape({0, 0, 3, 0, 0, lLow}).mEnd) << int{lLow};
    }
    for (unsigned int lHigh = 4; lHigh < 256; ++lHigh) {
        EXPECT_EQ(-1, Unescape({0, 0, 3, static_cast<Byte>(lHigh)}).mEnd) << lHigh;
    }
}

TEST(EBSPtoRBSP, LeavesWhatIsInFrontOfTheBegin) {
    EXPECT_EQ((Bytes{0, 0, 3, 0, 1}), Unescape({0, 0, 3, 0, 1}, 2).mBytes);
    EXPECT_EQ((Bytes{0, 0, 1}), Unescape({0, 0, 1}, 1).mBytes);
    EXPECT_EQ((Bytes{0, 0, 0, 1}), Unescape({0, 0, 0, 3, 1}, 1).mBytes);
    EXPECT_EQ(3, Unescape({0, 0, 1}, 3).mEnd);
    EXPECT_EQ(3, Unescape({0, 0, 1}, 4).mEnd);
    EXPECT_EQ(0, EBSPtoRBSP(nullptr, 0, 0));
}

TEST(RBSPtoSODB, CountsTheBitsInFrontOfTheTrailingOnes) {
    const struct {
        Bytes mIn;
        std::uint64_t mBits;
    } kCases[] = {
        {{}, 0},           {{0x80}, 0},        {{0xc0}, 1},       {{0x40}, 1},          {{0x01}, 7},        {{0xff}, 7},
        {{0xff, 0x80}, 8}, {{0xff, 0x01}, 15}, {{0xff, 0, 0}, 7}, {{0x80, 0, 0, 0}, 0}, {{0, 0, 0x10}, 19}, {{0}, 0},
        {{0, 0, 0}, 0},
    };
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mBits, RBSPtoSODB(lCase.mIn.data(), lCase.mIn.size()));
    }
}

}  // namespace
}  // namespace Parser
