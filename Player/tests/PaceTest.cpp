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
    EXPECT_EQ(20, lPace.Next(47).count());
    EXPECT_EQ(20, lPace.Next(79).count());
    EXPECT_EQ(12, lPace.Next(80).count()) << "would have brought 48";
    EXPECT_EQ(12, lPace.Next(48).count());
    EXPECT_EQ(13, lPace.Next(0).count());
    EXPECT_EQ(1, lPace.Next(500).count());
    EXPECT_EQ(1, lPace.Next(24).count()) << "the next would bring 48";
    EXPECT_EQ(2, lPace.Next(23).count());
}

TEST(PaceTest, MediaThatWaitsIsReadSeldomAndThenAllAtOnce) {
    Pace lPace;
    EXPECT_EQ(0, lPace.Next(80, true).count()) << "more may be there";
    EXPECT_EQ(2, lPace.Next(0, true).count());
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(0, lPace.Next(100, true).count());
        lPace.Next(30, true);
    }
    for (int i = 0; i < 30; ++i) {
        lPace.Next(30, true);
    }
    EXPECT_EQ(40, lPace.Next(30, true).count()) << "bursts bring it no nearer";
    EXPECT_EQ(40, lPace.Next(79, true).count());
    EXPECT_EQ(20, lPace.Next(30).count()) << "a socket may be full then";
}

TEST(PaceTest, LooksBringTheSameNumberAtEveryRate) {
    const struct {
        unsigned mPacketsPerMillisecond;
        int mWait;
    } kRates[] = {{1, 20}, {4, 11}, {9, 5}, {18, 2}, {36, 1}, {100, 1}};
    for (const auto& lRate : kRates) {
        Pace lPace;
        auto lWait = Pace::kShortest;
        for (int i = 0; i < 100; ++i) {
            lWait = lPace.Next(lRate.mPacketsPerMillisecond * static_cast<unsigned>(lWait.count()));
        }
        EXPECT_EQ(lRate.mWait, lWait.count()) << lRate.mPacketsPerMillisecond;
    }
}

}  // namespace
}  // namespace Player
