#include "Direction.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace Networks {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::WhenSorted;

constexpr double kForever = 1e9;

Packet Numbered(unsigned aNumber, std::size_t aSize = 1000) {
    Packet lPacket(aSize);
    lPacket[0] = static_cast<std::uint8_t>(aNumber >> 8);
    lPacket[1] = static_cast<std::uint8_t>(aNumber);
    return lPacket;
}

unsigned NumberOf(const Packet& aPacket) {
    return aPacket[0] * 256U + aPacket[1];
}

class DirectionTest : public testing::Test {
protected:
    Conditions mConditions;

    /// The numbers of the packets in the order of their arrival, of so many that were sent each millisecond.
    std::vector<unsigned> Pass(unsigned aCount) {
        Direction lWay(mConditions, 0);
        for (unsigned i = 0; i < aCount; ++i) {
            lWay.Take(Numbered(i), i / 1000.0);
        }
        std::vector<unsigned> lNumbers;
        while (const auto lPacket = lWay.Give(kForever)) {
            lNumbers.push_back(NumberOf(*lPacket));
        }
        return lNumbers;
    }
};

TEST_F(DirectionTest, APerfectLinkGivesWhatItTakesAtOnce) {
    Direction lWay(mConditions, 0);
    EXPECT_FALSE(lWay.NextDue());
    lWay.Take(Numbered(7), 1);
    EXPECT_EQ(1, lWay.NextDue());
    EXPECT_EQ(Numbered(7), lWay.Give(1));
    EXPECT_FALSE(lWay.Give(kForever));
}

TEST_F(DirectionTest, DelayIsTheSameForAll) {
    mConditions.mDelay = 0.5;
    Direction lWay(mConditions, 0);
    lWay.Take(Numbered(0), 1);
    EXPECT_EQ(1.5, lWay.NextDue());
    EXPECT_FALSE(lWay.Give(1.499));
    EXPECT_TRUE(lWay.Give(1.5));
}

TEST_F(DirectionTest, TheShareThatIsLost) {
    mConditions.mLoss = 0.2;
    const std::vector<unsigned> lNumbers = Pass(10000);
    EXPECT_NEAR(8000, static_cast<double>(lNumbers.size()), 200);
    EXPECT_TRUE(std::is_sorted(lNumbers.begin(), lNumbers.end()));
    EXPECT_EQ(lNumbers, Pass(10000)) << "the same seed, other fates";
    mConditions.mSeed = 2;
    EXPECT_NE(lNumbers, Pass(10000));
    mConditions.mLoss = 1;
    EXPECT_THAT(Pass(100), IsEmpty());
}

TEST_F(DirectionTest, BothWaysOfALinkLoseOtherPackets) {
    mConditions.mLoss = 0.5;
    Direction lDown(mConditions, 0);
    Direction lUp(mConditions, 1);
    unsigned lDifferent = 0;
    for (unsigned i = 0; i < 100; ++i) {
        if (lDown.Take(Numbered(i), 0).mIsLost != lUp.Take(Numbered(i), 0).mIsLost) { ++lDifferent; }
    }
    EXPECT_GT(lDifferent, 25U);
}

TEST_F(DirectionTest, JitterKeepsTheOrder) {
    mConditions.mJitter = 0.2;
    Direction lWay(mConditions, 0);
    for (unsigned i = 0; i < 100; ++i) {
        lWay.Take(Numbered(i), i * 0.1);
    }
    double lMost = 0;
    for (unsigned i = 0; i < 100; ++i) {
        const double lLag = *lWay.NextDue() - i * 0.1;
        EXPECT_GE(lLag, 0);
        EXPECT_LT(lLag, 0.2);
        lMost = std::fmax(lMost, lLag);
        EXPECT_EQ(i, NumberOf(*lWay.Give(kForever)));
    }
    EXPECT_GT(lMost, 0.1);
}

TEST_F(DirectionTest, WhatIsHeldBackIsOvertaken) {
    mConditions.mReorder = 0.1;
    mConditions.mHold = 0.0025;
    const std::vector<unsigned> lNumbers = Pass(1000);
    ASSERT_EQ(1000U, lNumbers.size());
    unsigned lOvertaken = 0;
    for (std::size_t i = 1; i < lNumbers.size(); ++i) {
        if (lNumbers[i] < lNumbers[i - 1]) { ++lOvertaken; }
        EXPECT_NEAR(static_cast<double>(i), lNumbers[i], 3);
    }
    EXPECT_NEAR(100, lOvertaken, 40);
}

TEST_F(DirectionTest, WhatArrivesTwice) {
    mConditions.mDuplicate = 1;
    EXPECT_THAT(Pass(3), WhenSorted(ElementsAre(0, 0, 1, 1, 2, 2)));
    mConditions.mDuplicate = 0.1;
    EXPECT_NEAR(1100, static_cast<double>(Pass(1000).size()), 40);
}

TEST_F(DirectionTest, ARateSpacesPackets) {
    mConditions.mRate = 80000;  // 1000 bytes in 0.1 s
    Direction lWay(mConditions, 0);
    lWay.Take(Numbered(0), 1);
    lWay.Take(Numbered(1), 1);
    EXPECT_DOUBLE_EQ(1.1, *lWay.NextDue());
    lWay.Give(kForever);
    EXPECT_DOUBLE_EQ(1.2, *lWay.NextDue());
    lWay.Give(kForever);
    lWay.Take(Numbered(2), 5);
    EXPECT_DOUBLE_EQ(5.1, *lWay.NextDue());
}

TEST_F(DirectionTest, AFullQueueLoses) {
    mConditions.mRate = 80000;
    mConditions.mQueue = 2500;
    Direction lWay(mConditions, 0);
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_FALSE(lWay.Take(Numbered(i), 1).mIsLost) << i;
    }
    EXPECT_TRUE(lWay.Take(Numbered(3), 1).mIsLost);
    EXPECT_FALSE(lWay.Take(Numbered(4), 1.1).mIsLost);
}

TEST_F(DirectionTest, NothingPassesWhileDown) {
    mConditions.mDownFrom = 2;
    mConditions.mDownTo = 4;
    Direction lWay(mConditions, 0);
    for (const double lTime : {0.0, 1.999, 2.0, 3.999, 4.0, 9.0}) {
        EXPECT_EQ(2 <= lTime && lTime < 4, lWay.Take(Numbered(0), lTime).mIsLost) << lTime;
    }
}

TEST(ConditionsTest, ValuesAreSetByName) {
    Conditions lConditions;
    lConditions.Set("loss=0.05");
    lConditions.Set("rate=1e5");
    lConditions.Set("seed=9");
    EXPECT_EQ(0.05, lConditions.mLoss);
    EXPECT_EQ(100000, lConditions.mRate);
    EXPECT_EQ(9U, lConditions.mSeed);
    for (const char* const lWrong : {"", "loss", "loss=", "loss=x", "loss=-1", "other=1", "=1"}) {
        EXPECT_THROW(lConditions.Set(lWrong), std::runtime_error) << lWrong;
    }
}

}  // namespace
}  // namespace Networks
