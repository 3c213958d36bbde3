#include "RTP/SenderClock.hpp"

#include <gtest/gtest.h>

namespace Player::RTP {
namespace {

constexpr std::uint64_t kSecond = 1ULL << 32;
constexpr std::uint64_t kStart = 0xE0001234ABCD5678ULL;

TEST(SenderClockTest, KnowsNothingAtFirst) {
    const SenderClock lClock;
    EXPECT_FALSE(lClock.IsKnown());
    EXPECT_EQ(0U, lClock.NTPTime());
    EXPECT_EQ(0U, lClock.RTPTimeExt());
    EXPECT_EQ(0U, lClock.ShortNTPTime());
}

TEST(SenderClockTest, FirstReportCountsAsItIs) {
    SenderClock lClock;
    lClock.Update(kStart, 5000, Time(10, 1), 90000);
    EXPECT_EQ(kStart, lClock.NTPTime());
    EXPECT_EQ(0x1234ABCDU, lClock.ShortNTPTime());
    EXPECT_EQ(5000U, lClock.RTPTimeExt());
}

TEST(SenderClockTest, LaterReportsAdvanceByTheirRTPTime) {
    SenderClock lClock;
    lClock.Update(kStart, 5000, Time(10, 1), 90000);
    lClock.Update(12345, 5000 + 45000, Time(11, 1), 90000);
    EXPECT_EQ(kStart + kSecond / 2, lClock.NTPTime());
    lClock.Update(0, 5000 - 45000U, Time(12, 1), 90000);
    EXPECT_EQ(kStart - kSecond / 2, lClock.NTPTime()) << "back as well";
}

TEST(SenderClockTest, StepsOfHalfTheRangeGoBack) {
    SenderClock lClock;
    lClock.Update(kStart, 0, Time(1, 1), 1);
    lClock.Update(0, 0x7FFFFFFF, Time(1, 1), 1);
    EXPECT_EQ(kStart + 0x7FFFFFFF * kSecond, lClock.NTPTime());
    lClock.Update(0, 0xFFFFFFFF, Time(1, 1), 1);
    EXPECT_EQ(kStart + 0x7FFFFFFF * kSecond - 0x80000000 * kSecond, lClock.NTPTime());
}

TEST(SenderClockTest, WithoutAClockRateTheTimeStands) {
    SenderClock lClock;
    lClock.Update(kStart, 0, Time(1, 1), 0);
    lClock.Update(99, 90000, Time(2, 1), 0);
    EXPECT_EQ(kStart, lClock.NTPTime());
}

TEST(SenderClockTest, ZeroNTPTimeIsNoReport) {
    SenderClock lClock;
    lClock.Update(0, 1000, Time(1, 1), 90000);
    EXPECT_FALSE(lClock.IsKnown());
    lClock.Update(kStart, 500, Time(1, 1), 90000);
    EXPECT_EQ(kStart, lClock.NTPTime());
    EXPECT_EQ(0x1000001F4U, lClock.RTPTimeExt()) << "its RTP time has counted";
}

TEST(SenderClockTest, CountsEveryStepDownAsAWrap) {
    SenderClock lClock;
    lClock.Update(kStart, 0xFFFFFFF0, Time(1, 1), 90000);
    lClock.Update(0, 0x10, Time(1, 1), 90000);
    EXPECT_EQ(0x100000010U, lClock.RTPTimeExt());
    lClock.Update(0, 0x10, Time(1, 1), 90000);
    EXPECT_EQ(0x100000010U, lClock.RTPTimeExt());
    lClock.Update(0, 0x0F, Time(1, 1), 90000);
    EXPECT_EQ(0x20000000FU, lClock.RTPTimeExt());
}

TEST(SenderClockTest, AgeCountsFromTheLastArrival) {
    SenderClock lClock;
    EXPECT_EQ(65536U * 3, lClock.Age(Time(3, 1))) << "from zero when there was none";
    lClock.Update(kStart, 0, Time(10, 1), 90000);
    EXPECT_EQ(0U, lClock.Age(Time(10, 1)));
    EXPECT_EQ(32768U, lClock.Age(Time(21, 2)));
    EXPECT_EQ(0U, lClock.Age(Time(9, 1))) << "a clock that was set back";
    lClock.Update(kStart, 0, Time(65535, 1), 90000);
    EXPECT_EQ(0U, lClock.Age(Time(65537, 1))) << "32 bits have wrapped";
}

}  // namespace
}  // namespace Player::RTP
