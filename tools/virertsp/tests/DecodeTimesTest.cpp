#include "writers/DecodeTimes.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace Virertsp {
namespace {

std::vector<DecodeTimes::Times> All(const std::vector<std::int64_t>& aPlay, std::size_t aLookAhead) {
    DecodeTimes lTimes(aLookAhead);
    std::vector<DecodeTimes::Times> lAll;
    for (const std::int64_t lPlay : aPlay) {
        lTimes.Push(lPlay);
        while (const auto lNext = lTimes.Pop(false)) {
            lAll.push_back(*lNext);
        }
    }
    while (const auto lNext = lTimes.Pop(true)) {
        lAll.push_back(*lNext);
    }
    return lAll;
}

TEST(DecodeTimesTest, ReorderedPicturesKeepTheirPlayTimes) {
    std::vector<std::int64_t> lPlay = {0};
    // I P B B P B B ...
    for (std::int64_t lPicture = 3; lPicture < 90; lPicture += 3) {
        lPlay.insert(lPlay.end(), {lPicture * 10, (lPicture - 2) * 10, (lPicture - 1) * 10});
    }
    const auto lAll = All(lPlay, 16);
    ASSERT_EQ(lPlay.size(), lAll.size());
    for (std::size_t i = 0; i < lAll.size(); ++i) {
        EXPECT_EQ(lPlay[i], lAll[i].mPlay);
        EXPECT_EQ(static_cast<std::int64_t>(i) * 10 - 10, lAll[i].mDecode);
        EXPECT_LE(lAll[i].mDecode, lAll[i].mPlay);
    }
}

TEST(DecodeTimesTest, WithoutReorderingTheTimesAreTheSame) {
    for (const std::size_t lLookAhead : {0U, 16U}) {
        for (const auto& lTimes : All({5, 10, 15, 40}, lLookAhead)) {
            EXPECT_EQ(lTimes.mPlay, lTimes.mDecode);
        }
    }
}

TEST(DecodeTimesTest, WhateverComesDecodeTimesGrowAndPrecedePlayTimes) {
    std::int64_t lLast = -1000000;
    for (const auto& lTimes : All({100, 100, 100, 3, 2, 1, 0, 50, 50, 7, 1000, 4}, 3)) {
        EXPECT_LT(lLast, lTimes.mDecode);
        EXPECT_LE(lTimes.mDecode, lTimes.mPlay);
        lLast = lTimes.mDecode;
    }
}

}  // namespace
}  // namespace Virertsp
