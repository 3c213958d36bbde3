#include "Player/Time.hpp"

#include <gtest/gtest.h>
#include <sys/time.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include "support/ClockUnderTest.hpp"

namespace Player {
namespace {

constexpr long long kSecond = 0x100000000;
constexpr long long kLargest = std::numeric_limits<long long>::max();
constexpr long long kSmallest = std::numeric_limits<long long>::min();

TEST(Time, SecondsInAndOut) {
    EXPECT_EQ(Time(3, 2), Time::Seconds(1.5));
    EXPECT_EQ(Time(-1), Time::Seconds(-1.0 / 4294967296.0));
    EXPECT_EQ(Time(0), Time::Seconds(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(Time(std::numeric_limits<long long>::max()), Time::Seconds(2147483648.0));
    EXPECT_EQ(Time(std::numeric_limits<long long>::min()), Time::Seconds(-1e300));
    EXPECT_EQ(2147483647.0, Time::Seconds(2147483647.0).ToSeconds());
    EXPECT_EQ(-0.25, Time::Seconds(-0.25).ToSeconds());
}

TEST(Time, NowReadsTheClockThatIsSet) {
    {
        Testing::ClockUnderTest lClock;
        const Time lBegin = Time::Now();
        EXPECT_EQ(lBegin, Time::Now());
        lClock.Advance(Time::Seconds(3600));
        EXPECT_EQ(lBegin + Time(3600, 1), Time::Now());
    }
    const Time lBefore = Time::Now();
    EXPECT_TRUE(Time::Now() - lBefore < Time(60, 1));
}

TEST(Time, HoldsTheRawValue) {
    EXPECT_EQ(0, Time().Get());
    EXPECT_EQ(0, Time(0).Get());
    EXPECT_EQ(5, Time(5).Get()) << "not seconds";
    EXPECT_EQ(-1, Time(-1).Get());
    EXPECT_EQ(kSmallest, Time(kSmallest).Get());
}

TEST(Time, FromTicks) {
    const struct {
        long long mTicks;
        UInt mResolution;
        bool mRound;
        long long mRaw;
    } kCases[] = {
        {3, 2, false, 0x180000000},
        {90000, 90000, false, kSecond},
        {90000, 90000, true, kSecond},
        {0, 1, true, 0},
        {7, 1, true, 7 * kSecond},
        {1, 3, false, 0x55555555},
        {1, 3, true, 0x55555555},   // 1431655765.33 goes down
        {2, 3, false, 0xAAAAAAAA},  // 2863311530.67 ...
        {2, 3, true, 0xAAAAAAAB},   // ... goes up
        {1, 0xFFFFFFFF, false, 1},
        {0x80000000, 0xFFFFFFFF, false, 0x80000000},  // a rest beyond 31 bits
        {0xFFFFFFFE, 0xFFFFFFFF, false, 0xFFFFFFFE},
        {0xFFFFFFFE, 0xFFFFFFFF, true, 0xFFFFFFFF},
        {0xFFFFFFFF, 0xFFFFFFFF, true, kSecond},
        {-3, 2, false, -0x180000000},
        {-1, 3, false, -0x55555555},  // cut towards zero, not down
        {-2, 3, false, -0xAAAAAAAALL},
        {-2, 3, true, -0xAAAAAAAALL},  // the half is added before the cut: up from -2863311530.67 + 0.33
        {-1, 2, true, -0x7FFFFFFFLL},  // -2147483647.5
        {0x7FFFFFFF, 1, false, 0x7FFFFFFF00000000},
        {0x100000000, 1, false, 0},  // wraps
        {kLargest, 1, false, -kSecond},
        {kSmallest, 1, false, 0},
        {kSmallest, 2, false, 0},
        {1, 0, false, 0},
        {-1, 0, true, 0},
        {kSmallest, 0, true, 0},
    };
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mRaw, Time(lCase.mTicks, lCase.mResolution, lCase.mRound).Get())
            << lCase.mTicks << " / " << lCase.mResolution << ", " << lCase.mRound;
    }
    EXPECT_EQ(0xAAAAAAAA, Time(2, 3).Get()) << "not rounded unless asked for";
}

TEST(Time, Scales) {
    const struct {
        long long mRaw;
        long long mMul;
        UInt mDiv;
        bool mRound;
        long long mExpected;
    } kCases[] = {
        {0x180000000, 1000000000, 1, false, 1500000000},
        {0x180000000, 90000, 1, false, 135000},
        {0x180000000, 1, 1, false, 1},
        {0x180000000, 1, 1, true, 2},  // half of one result unit is enough to go up
        {0x17FFFFFFF, 1, 1, true, 1},
        {10 * kSecond, 1, 4, false, 2},
        {10 * kSecond, 1, 4, true, 3},  // 2.5
        {9 * kSecond, 1, 4, true, 2},   // 2.25
        {1, 0x100000000, 1, false, 1},
        {1, 0xFFFFFFFF, 1, false, 0},
        {0xFFFFFFFF, 0xFFFFFFFF, 1, false, 0xFFFFFFFE},
        // Carries from the lowest part of the product, alone and with the rounding.
        {0xFFFFFFFFFFFF, 0xFFFFFFFF, 1, false, 0xFFFFFFFEFFFF},
        {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, true, 1},
        {kLargest, 1, 1, false, 0x7FFFFFFF},
        {kLargest, kSecond, 1, false, kLargest},
        {kLargest, 1, 0xFFFFFFFF, false, 0},
        {kLargest, 1, 0xFFFFFFFF, true, 1},  // just over a half
        {kLargest, 2, 0xFFFFFFFF, true, 1},
        // A product beyond 64 bits keeps its low bits: those of (2^63 - 1)^2 / 2^32.
        {kLargest, kLargest, 1, false, -0x100000000},
        // Negative: the division has no sign.
        {-kSecond, 1, 1, false, -1},
        {-kSecond, 1, 2, false, kLargest},
        {-1, 1, 1, false, -1},  // the shift goes down
        {kSecond, -1, 1, false, -1},
        {kSecond, 1, 0, false, 0},
        {kSecond, 1, 0, true, 0},
        {kSmallest, kSmallest, 0, true, 0},
    };
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mExpected, Time(lCase.mRaw).Scale(lCase.mMul, lCase.mDiv, lCase.mRound))
            << lCase.mRaw << " * " << lCase.mMul << " / " << lCase.mDiv << ", " << lCase.mRound;
    }
    EXPECT_EQ(1, Time(0x180000000).Scale(1, 1)) << "not rounded unless asked for";
}

TEST(Time, NanoSeconds) {
    EXPECT_EQ(1500000000, Time(3, 2).NanoSeconds());
    EXPECT_EQ(0, Time(1).NanoSeconds());  // 0.23 ns
    EXPECT_EQ(0, Time(2).NanoSeconds(true));
    EXPECT_EQ(1, Time(3).NanoSeconds(true));  // 0.70 ns
    EXPECT_EQ(0, Time(3).NanoSeconds(false));
    // 2^31 - 1 s: the product has 94 bits.
    EXPECT_EQ(2147483647000000000, Time(0x7FFFFFFF, 1).NanoSeconds());
}

#ifdef __SIZEOF_INT128__

__extension__ using Wide = __int128;

/// Values of every magnitude, the extremes among them.
class Values {
public:
    std::uint64_t Next() {
        const std::uint64_t lBits = mEngine() >> mEngine() % 64;
        switch (mEngine() % 8) {
            case 0: return ~lBits;
            case 1: return lBits << mEngine() % 64;
            case 2: return std::uint64_t{1} << mEngine() % 64;
            case 3: return (std::uint64_t{1} << mEngine() % 64) - 1;
            default: return lBits;
        }
    }
    long long NextSigned() { return static_cast<long long>(Next()); }
    UInt NextUInt() { return static_cast<UInt>(Next()); }

private:
    std::mt19937_64 mEngine{20110907};
};

long long ReferenceScale(long long aRaw, long long aMul, UInt aDiv, bool aRound) {
    const Wide lAddend = aRound ? static_cast<Wide>(aDiv) << 31 : 0;
    // The product of two 64-bit values and the addend fit; only (2^63)^2 + 2^63 comes near.
    const Wide lSum = static_cast<Wide>(aRaw) * aMul + lAddend;
    return static_cast<long long>(static_cast<std::uint64_t>(lSum >> 32) / aDiv);
}

long long ReferenceTicks(long long aValue, UInt aResolution, bool aRound) {
    const Wide lOne = static_cast<Wide>(1) << 32;
    const Wide lResolution = aResolution;
    const Wide lFraction = (aValue % lResolution * lOne + (aRound ? aResolution / 2 : 0)) / lResolution;
    return static_cast<long long>(static_cast<std::uint64_t>(aValue / lResolution * lOne + lFraction));
}

TEST(Time, ScalesLikeWideArithmetic) {
    Values lValues;
    for (int i = 0; i < 300000; ++i) {
        const long long lRaw = lValues.NextSigned();
        const long long lMul = lValues.NextSigned();
        const UInt lDiv = lValues.NextUInt();
        if (0 == lDiv) { continue; }
        for (const bool lRound : {false, true}) {
            ASSERT_EQ(ReferenceScale(lRaw, lMul, lDiv, lRound), Time(lRaw).Scale(lMul, lDiv, lRound))
                << lRaw << " * " << lMul << " / " << lDiv << ", " << lRound;
        }
    }
}

TEST(Time, ConvertsTicksLikeWideArithmetic) {
    Values lValues;
    for (int i = 0; i < 300000; ++i) {
        const long long lTicks = lValues.NextSigned();
        const UInt lResolution = lValues.NextUInt();
        if (0 == lResolution) { continue; }
        for (const bool lRound : {false, true}) {
            ASSERT_EQ(ReferenceTicks(lTicks, lResolution, lRound), Time(lTicks, lResolution, lRound).Get())
                << lTicks << " / " << lResolution << ", " << lRound;
        }
    }
}

#endif

TEST(Time, TicksComeBack) {
    for (const UInt lResolution : {1U, 1000U, 8000U, 44100U, 90000U, 1000000U}) {
        for (long long lTicks = 0; lTicks < 300000; lTicks += 977) {
            ASSERT_EQ(lTicks, Time(lTicks, lResolution, true).Scale(lResolution, 1, true)) << lResolution;
        }
    }
}

TEST(Time, Arithmetic) {
    Time lTime(5);
    lTime += Time(3);
    EXPECT_EQ(8, lTime.Get());
    lTime -= Time(10);
    EXPECT_EQ(-2, lTime.Get());
    EXPECT_EQ(1, (lTime + Time(3)).Get());
    EXPECT_EQ(-5, (lTime - Time(3)).Get());
    EXPECT_EQ(-2, lTime.Get());
    // No saturation.
    EXPECT_EQ(kSmallest, (Time(kLargest) + Time(1)).Get());
    EXPECT_EQ(kLargest, (Time(kSmallest) - Time(1)).Get());
    EXPECT_EQ(kSmallest, (Time(0) - Time(kSmallest)).Get());
    Time lWrapped(kLargest);
    lWrapped += Time(1);
    EXPECT_EQ(kSmallest, lWrapped.Get());
}

TEST(Time, ComparesWithSign) {
    const Time lNegative(-1);
    const Time lZero;
    const Time lPositive(1);
    EXPECT_TRUE(lNegative < lZero);
    EXPECT_FALSE(lZero < lNegative);
    EXPECT_FALSE(lZero < lZero);
    EXPECT_TRUE(lPositive > lNegative);
    EXPECT_FALSE(lZero > lZero);
    EXPECT_TRUE(lZero >= lZero);
    EXPECT_TRUE(lZero >= lNegative);
    EXPECT_FALSE(lNegative >= lZero);
    EXPECT_TRUE(lZero == Time(0));
    EXPECT_FALSE(lZero == lPositive);
    EXPECT_TRUE(lZero != lPositive);
    EXPECT_FALSE(lZero != Time(0));
}

TEST(Time, NowIsTheWallClock) {
    timeval lBefore{};
    ASSERT_EQ(0, gettimeofday(&lBefore, nullptr));
    const Time lNow = Time::Now();
    timeval lAfter{};
    ASSERT_EQ(0, gettimeofday(&lAfter, nullptr));
    EXPECT_GE(lNow, Time(lBefore.tv_sec * 1000000LL + lBefore.tv_usec, 1000000));
    EXPECT_GE(Time(lAfter.tv_sec * 1000000LL + lAfter.tv_usec, 1000000), lNow);
}

TEST(Time, TheClockGoesOnAfterJanuary2038) {
    EXPECT_LE(8U, sizeof(timeval::tv_sec));
}

TEST(Time, FromDecimalText) {
    const struct {
        const char* mText;
        bool mRound;
        Time mExpected;
    } kCases[] = {
        {"  2.25", false, Time(9, 4)},
        {"12.5", false, Time(25, 2)},
        {"7", false, Time(7, 1)},
        {"0", false, Time(0)},
        {"", false, Time(0)},
        {"   ", false, Time(0)},
        {"now", false, Time(0)},
        {".5", false, Time(1, 2)},
        {"3.", false, Time(3, 1)},
        {".", false, Time(0)},
        {"-1", false, Time(0)},
        {"-1", true, Time(0)},
        {" -1.5", false, Time(0)},
        {"- 1", false, Time(0)},
        {"+1", false, Time(0)},
        {"\t1", false, Time(0)},  // only blanks are skipped
        {"1 2", false, Time(1, 1)},
        {"1,5", false, Time(1, 1)},
        {"1.5.7", false, Time(3, 2)},
        {"1.5s", false, Time(3, 2)},
        {"007.50", false, Time(15, 2)},
        {"1.1234567899", true, Time(1123456790, 1000000000, true)},
        {"1.1234567899", false, Time(1123456789, 1000000000)},
        {"1.1234567894", true, Time(1123456789, 1000000000, true)},   // 4 does not round up
        {"1.1234567895", true, Time(1123456790, 1000000000, true)},   // 5 does
        {"1.12345678949", true, Time(1123456789, 1000000000, true)},  // and the 11th digit is not looked at
        {"1.123456789", true, Time(1123456789, 1000000000, true)},
        {"0.0333333333", true, Time(33333333, 1000000000, true)},
        {"0.9999999999", true, Time(1, 1)},
        {"0.123456789x9", true, Time(123456789, 1000000000, true)},
        // The conversion of the whole rounds as well.
        {"0.7", false, Time(7, 10, false)},
        {"0.7", true, Time(7, 10, true)},
    };
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mExpected.Get(), Time::WithDecimalCString(lCase.mText, lCase.mRound).Get())
            << '"' << lCase.mText << "\", " << lCase.mRound;
    }
    EXPECT_NE(Time(2, 3, false).Get(), Time(2, 3, true).Get());
    EXPECT_EQ(Time(1123456789, 1000000000).Get(), Time::WithDecimalCString("1.1234567899").Get())
        << "not rounded unless asked for";
}

TEST(Time, EndlessDigitsAreHarmless) {
    const std::string lDigits(1000, '9');
    // 10^1000 - 1, of which 64 bits remain.
    EXPECT_EQ(Time(-1, 1).Get(), Time::WithDecimalCString(lDigits.c_str()).Get());
    EXPECT_EQ(Time(1000000000, 1000000000).Get(), Time::WithDecimalCString(("0." + lDigits).c_str(), true).Get());
    EXPECT_EQ(Time(0).Get(), Time::WithDecimalCString((std::string(1000, '0') + ".0").c_str()).Get());
}

}  // namespace
}  // namespace Player
