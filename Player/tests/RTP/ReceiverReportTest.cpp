#include "RTP/ReceiverReport.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace Player::RTP {
namespace {

TEST(ReceiverReportTest, WritesEveryField) {
    ReceiverReport lReport;
    lReport.mLocalSSRC = 0x12345678;
    lReport.mSourceSSRC = 0x9ABCDEF0;
    lReport.mFractionLost = 55;
    lReport.mCumulativeLost = -123;
    lReport.mSeqCycles = 0x0102;
    lReport.mHighestSeq = 0x0304;
    lReport.mJitter = 0x05060708;
    lReport.mLastSR = 0x090A0B0C;
    lReport.mDelaySinceLastSR = 0x0D0E0F10;
    // clang-format off
    const std::vector<Byte> kExpected = {
        0x81, 201, 0x00, 0x07,   // version 2, one report; RR; length 7
        0x12, 0x34, 0x56, 0x78,  // local SSRC
        0x9A, 0xBC, 0xDE, 0xF0,  // source reported on
        0x37,                    // fraction lost 55/256
        0xFF, 0xFF, 0x85,        // cumulative lost -123, signed 24 bit
        0x01, 0x02,              // cycles
        0x03, 0x04,              // highest sequence number
        0x05, 0x06, 0x07, 0x08,  // jitter
        0x09, 0x0A, 0x0B, 0x0C,  // last SR
        0x0D, 0x0E, 0x0F, 0x10,  // delay since last SR
    };
    // clang-format on
    std::vector<Byte> lBytes(ReceiverReport::kSize, 0xEE);
    lReport.Write(lBytes.data());
    EXPECT_EQ(kExpected, lBytes);
}

TEST(ReceiverReportTest, FractionAndCountShareAWord) {
    const struct {
        Byte mFraction;
        SInt mLost;
        std::vector<Byte> mExpected;
    } kCases[] = {
        {0, 0, {0, 0, 0, 0}},
        {255, 0, {255, 0, 0, 0}},
        {0, -1, {0, 0xFF, 0xFF, 0xFF}},
        {1, kMaxLost, {1, 0x7F, 0xFF, 0xFF}},
        {2, kMinLost, {2, 0x80, 0x00, 0x00}},
    };
    for (const auto& lCase : kCases) {
        ReceiverReport lReport;
        lReport.mFractionLost = lCase.mFraction;
        lReport.mCumulativeLost = lCase.mLost;
        std::vector<Byte> lBytes(ReceiverReport::kSize);
        lReport.Write(lBytes.data());
        EXPECT_EQ(lCase.mExpected, std::vector<Byte>(lBytes.begin() + 12, lBytes.begin() + 16));
    }
}

TEST(ReceiverReportTest, CumulativeLossSaturates) {
    const struct {
        UInt mExpected;
        UInt mReceived;
        SInt mLost;
    } kCases[] = {
        {10, 10, 0},
        {10, 7, 3},
        {7, 10, -3},
        {8388607, 0, 8388607},
        {8388608, 0, 8388607},
        {0x7FFFFFFF, 0, 8388607},
        {1, 8388609, -8388608},
        {1, 8388610, -8388608},
        {0, 0x80000000, -8388608},
        {5, 0xFFFFFFFE, 7},  // both have wrapped apart
    };
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mLost, CumulativeLost(lCase.mExpected, lCase.mReceived))
            << lCase.mExpected << " - " << lCase.mReceived;
    }
}

TEST(ReceiverReportTest, FractionLostIsThatOfTheInterval) {
    LossInterval lLosses;
    EXPECT_EQ(128, lLosses.Advance(100, 50));
    EXPECT_EQ(0, lLosses.Advance(200, 150)) << "none in this interval";
    EXPECT_EQ(64, lLosses.Advance(204, 153));
    EXPECT_EQ(0, lLosses.Advance(204, 153)) << "nothing happened";
    EXPECT_EQ(0, lLosses.Advance(208, 158)) << "more than expected";
    EXPECT_EQ(85, lLosses.Advance(211, 160)) << "256 / 3, cut";
}

TEST(ReceiverReportTest, LossOfAllDoesNotFitTheFraction) {
    LossInterval lLosses;
    lLosses.Advance(10, 10);
    EXPECT_EQ(0, lLosses.Advance(20, 10)) << "256, of which 8 bits are sent";
    EXPECT_EQ(230, lLosses.Advance(30, 11));
}

TEST(ReceiverReportTest, FractionLostOfHugeLossesIsExact) {
    LossInterval lLosses;
    EXPECT_EQ(255, lLosses.Advance(0x7FFFFFFF, 1));
    LossInterval lOthers;
    EXPECT_EQ(127, lOthers.Advance(0x7FFFFFFF, 0x40000000));
}

TEST(ReceiverReportTest, NothingIsLostWhereTheExpectedCountBeginsAnew) {
    for (const UInt lCounted : {2U, 300U, 0x01000001U, 0x7FFFFFFFU}) {
        LossInterval lLosses;
        EXPECT_EQ(0, lLosses.Advance(lCounted, lCounted));
        EXPECT_EQ(0, lLosses.Advance(1, lCounted)) << lCounted;
        EXPECT_EQ(128, lLosses.Advance(5, lCounted + 2)) << "and goes on from there";
    }
}

}  // namespace
}  // namespace Player::RTP
