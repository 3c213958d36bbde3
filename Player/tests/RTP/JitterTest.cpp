#include "RTP/Jitter.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace Player::RTP {
namespace {

/// The estimate after each transit.
std::vector<UInt> Estimates(UInt aStart, const std::vector<UInt>& aTransits) {
    Jitter lJitter;
    lJitter.Start(aStart);
    std::vector<UInt> lResult;
    for (const UInt lTransit : aTransits) {
        lJitter.Update(lTransit);
        lResult.push_back(lJitter.Get());
    }
    return lResult;
}

TEST(JitterTest, EvenTransitsHaveNone) {
    EXPECT_EQ((std::vector<UInt>{0, 0, 0}), Estimates(500, {500, 500, 500}));
}

TEST(JitterTest, FollowsASixteenthOfTheDifference) {
    // Times 16: 160; 160 + 160 - (168 >> 4) = 310; 310 + 0 - (318 >> 4) = 291; 291 + 320 - 18 = 593.
    EXPECT_EQ((std::vector<UInt>{10, 19, 18, 37}), Estimates(1000, {1160, 1000, 1000, 680}));
}

TEST(JitterTest, RoundsWhatItForgets) {
    // Times 16: 8; 8 - (16 >> 4) = 7; 7 - (15 >> 4) = 7 for ever.
    Jitter lJitter;
    lJitter.Update(8 * 16);  // 128 / 16
    EXPECT_EQ(8U, lJitter.Get());
    for (int i = 0; i < 1000; ++i) {
        lJitter.Update(8 * 16);
    }
    EXPECT_EQ(0U, lJitter.Get());
}

TEST(JitterTest, DifferencesWrap) {
    EXPECT_EQ((std::vector<UInt>{2, 3}), Estimates(0xFFFFFFF0, {0x10, 0xFFFFFFF8}));
    EXPECT_EQ((std::vector<UInt>{0x08000000}), Estimates(0, {0x80000000}));
    EXPECT_EQ((std::vector<UInt>{0x07FFFFFF}), Estimates(0, {0x80000001}));
}

}  // namespace
}  // namespace Player::RTP
