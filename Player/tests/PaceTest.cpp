#include "Player/Pace.hpp"

#include <gtest/gtest.h>

namespace Player {
namespace {

TEST(PaceTest, IdleLooksGrowRareAndBurstsBringThemBack) {
    Pace lPace;
    EXPECT_EQ(2, lPace.Next(0).count());
    for (int i = 0; i < 30; ++i) {
        lPace.Next(0);
    }
    EXPECT_EQ(20, lPace.Next(23).count());
    EXPECT_EQ(20, lPace.Next(24).count());
    EXPECT_EQ(20, lPace.Next(63).count());
    EXPECT_EQ(1, lPace.Next(64).count());
    EXPECT_EQ(1, lPace.Next(24).count());
    EXPECT_EQ(2, lPace.Next(23).count());
}

}  // namespace
}  // namespace Player
