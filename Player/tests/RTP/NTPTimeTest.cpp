#include "RTP/NTPTime.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace Player::RTP {
namespace {

constexpr long long kSecond = 1LL << 32;
constexpr UInt kMaxRes = 0xFFFFFFFF;

TEST(NTPTimeTest, TicksBecomeFixedPointSeconds) {
    const struct {
        long long mTicks;
        UInt mRes;
        long long mExpected;
    } kCases[] = {
        {0, 90000, 0},
        {90000, 90000, kSecond},
        {-90000, 90000, -kSecond},
        {45000, 90000, kSecond / 2},
        {-45000, 90000, 1 - kSecond / 2},  // half a unit is added before the cut towards zero
        {1, 3, 1431655765},                // 1431655765.33: down
        {2, 3, 2863311531},                // 2863311530.67: up, where cutting would give ...530
        {-1, 3, -1431655765},              // (-2^32 + 1) / 3
        {-2, 3, -2863311530},              // (-2^33 + 1) / 3, cut towards zero
        {-4, 3, -kSecond - 1431655765},
        {1, 1, kSecond},
        {0x100000000LL, 90000, 204963823041217LL},
        {1, kMaxRes, 1},  // 1.0000000002
        {kMaxRes - 1LL, kMaxRes, kSecond - 1},
        {-(kMaxRes - 1LL), kMaxRes, 2 - kSecond},
        {5, 0, 0},  // no clock rate: no time
        {-5, 0, 0},
    };
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mExpected, ToNTPRes(lCase.mTicks, lCase.mRes)) << lCase.mTicks << " / " << lCase.mRes;
    }
}

TEST(NTPTimeTest, FixedPointSecondsBecomeTicks) {
    const struct {
        long long mNTP;
        UInt mRes;
        int mExpected;
    } kCases[] = {
        {0, 90000, 0},
        {kSecond, 90000, 90000},
        {-kSecond, 90000, -90000},
        {kSecond / 2, 90000, 45000},
        {kSecond / 2, 1, 1},  // half a tick: up
        {kSecond / 2 - 1, 1, 0},
        {-kSecond / 2, 1, 0},  // up, also below zero
        {-kSecond / 2 - 1, 1, -1},
        {1431655765, 3, 1},
        {kSecond, 0, 0},
        {kSecond, kMaxRes, -1},               // low 32 bits of 2^32 - 1
        {kSecond * 50000, 90000, 205032704},  // low 32 bits of 4500000000
    };
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mExpected, ToRTPRes(lCase.mNTP, lCase.mRes)) << lCase.mNTP << " * " << lCase.mRes;
    }
}

TEST(NTPTimeTest, TicksSurviveTheRoundTrip) {
    for (const UInt lRes : {1U, 3U, 8000U, 44100U, 90000U, 1000003U}) {
        for (const int lTicks : {0, 1, -1, 7, -7, 12345, -12345, 2000000000, -2000000000}) {
            EXPECT_EQ(lTicks, ToRTPRes(ToNTPRes(lTicks, lRes), lRes)) << lTicks << " at " << lRes;
        }
    }
}

TEST(NTPTimeTest, ShortTimeCountsSixtyFiveThousandthsOfASecond) {
    EXPECT_EQ(0U, ToShortNTP(Time(0)));
    EXPECT_EQ(65536U, ToShortNTP(Time(1, 1)));
    EXPECT_EQ(98304U, ToShortNTP(Time(3, 2)));
    EXPECT_EQ(0U, ToShortNTP(Time(65535)));  // cut
    EXPECT_EQ(1U, ToShortNTP(Time(65536)));
    EXPECT_EQ(0x00010000U, ToShortNTP(Time(65537, 1)));  // low 32 bits
}

TEST(NTPTimeTest, NoValueIsUndefined) {
    constexpr long long kMin = std::numeric_limits<long long>::min();
    constexpr long long kMax = std::numeric_limits<long long>::max();
    for (const long long lValue : {kMin, kMin + 1, -kSecond, -1LL, 0LL, 1LL, kSecond - 1, kMax - 1, kMax}) {
        for (const UInt lRes : {0U, 1U, 2U, 90000U, 0x7FFFFFFFU, 0x80000000U, kMaxRes - 1, kMaxRes}) {
            ToNTPRes(lValue, lRes);
            ToRTPRes(lValue, lRes);
            ToShortNTP(Time(lValue));
        }
    }
    EXPECT_EQ(0, ToNTPRes(kMin, 1));  // wraps
}

}  // namespace
}  // namespace Player::RTP
