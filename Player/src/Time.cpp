#include "Player/Time.hpp"

#include <sys/time.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <limits>

#include "Clock.hpp"
#include "Throw.hpp"

namespace Player {

namespace {

constexpr int kFractionBits = 32;
constexpr double kUnitsPerSecond = 4294967296.0;
constexpr int kMaxFractionDigits = 9;

std::atomic<Time (*)()> gClock{nullptr};

std::uint64_t Bits(long long aValue) {
    return static_cast<std::uint64_t>(aValue);
}

long long FromBits(std::uint64_t aBits) {
    return static_cast<long long>(aBits);
}

/// (aA * aB + aAddend) >> 32, kept to 64 bits. The full 128-bit product is formed in halves, so the
/// result is the same on every machine.
long long MultiplyAndShift(long long aA, long long aB, std::uint64_t aAddend) {
    const std::uint64_t lALow = Bits(aA) & 0xFFFFFFFFU;
    const std::uint64_t lBLow = Bits(aB) & 0xFFFFFFFFU;
    const std::uint64_t lAHigh = Bits(aA >> kFractionBits);
    const std::uint64_t lBHigh = Bits(aB >> kFractionBits);

    // Bits 32 to 95 of the product: all that the shift keeps. Arithmetic modulo 2^64 throughout.
    const std::uint64_t lLow = lALow * lBLow;
    const std::uint64_t lCarry = lLow + aAddend < lLow ? std::uint64_t{1} << kFractionBits : 0;
    const std::uint64_t lShiftedLow = ((lLow + aAddend) >> kFractionBits) + lCarry;
    const std::uint64_t lMiddle = lALow * lBHigh + lAHigh * lBLow;
    const std::uint64_t lShiftedHigh = (lAHigh * lBHigh) << kFractionBits;
    return FromBits(lShiftedLow + lMiddle + lShiftedHigh);
}

bool IsDigit(char aCh) {
    return '0' <= aCh && aCh <= '9';
}

/// aValue * 10 + aDigit modulo 2^64: an endless row of digits is no undefined behaviour.
long long AppendDigit(long long aValue, char aDigit) {
    return FromBits(Bits(aValue) * 10 + static_cast<std::uint64_t>(aDigit - '0'));
}

/// aRest / aResolution as a fraction in units of 2^-32, where |aRest| < aResolution: worked out on the
/// magnitude, which fits 64 bits for every resolution, and cut towards zero.
std::uint64_t Fraction(long long aRest, UInt aResolution, bool aRound) {
    const std::uint64_t lHalf = aRound ? aResolution / 2 : 0;
    if (aRest < 0) { return 0 - ((Bits(-aRest) << kFractionBits) - lHalf) / aResolution; }
    return ((Bits(aRest) << kFractionBits) + lHalf) / aResolution;
}

}  // namespace

Time::Time(long long aValue, UInt aResolution, bool aRound) {
    if (0 == aResolution) { return; }
    const long long lResolution = aResolution;
    const std::uint64_t lWhole = Bits(aValue / lResolution) << kFractionBits;
    mRaw = FromBits(lWhole + Fraction(aValue % lResolution, aResolution, aRound));
}

long long Time::Scale(long long aMul, UInt aDiv, bool aRound) const {
    if (0 == aDiv) { return 0; }
    const std::uint64_t lHalf = aRound ? std::uint64_t{aDiv} << (kFractionBits - 1) : 0;
    return FromBits(Bits(MultiplyAndShift(mRaw, aMul, lHalf)) / aDiv);
}

Time Time::Seconds(double aSeconds) {
    constexpr double kLimit = 2147483648.0;
    if (aSeconds >= kLimit) { return Time(std::numeric_limits<long long>::max()); }
    if (aSeconds < -kLimit) { return Time(std::numeric_limits<long long>::min()); }
    return aSeconds == aSeconds ? Time(static_cast<long long>(aSeconds * kUnitsPerSecond)) : Time();
}

double Time::ToSeconds() const {
    return static_cast<double>(mRaw) / kUnitsPerSecond;
}

void SetClock(Time (*aClock)()) {
    gClock = aClock;
}

Time Time::Now() {
    Time (*const lClock)() = gClock;
    if (nullptr != lClock) { return lClock(); }
    timeval lNow{};
    if (0 != gettimeofday(&lNow, nullptr)) {
        const int lErrno = errno;
        PLAYER_THROW_SYSTEM(SystemErr, ErrorCode::kClockFailed, lErrno, "Time::Now(): %s [%u]", "gettimeofday() failed",
                            static_cast<UInt>(lErrno));
    }
    const std::uint64_t lSeconds = Bits(lNow.tv_sec);
    const std::uint64_t lMicroSeconds = Bits(lNow.tv_usec);
    return Time(FromBits((lSeconds << kFractionBits) + (lMicroSeconds << kFractionBits) / 1000000));
}

Time Time::WithDecimalCString(const char* aText, bool aRound) {
    const char* lText = aText;
    while (' ' == *lText) {
        ++lText;
    }
    // A leading '-' is no digit and ends the number before it began: only times from 0 on are read.
    long long lValue = 0;
    for (; IsDigit(*lText); ++lText) {
        lValue = AppendDigit(lValue, *lText);
    }

    UInt lDivisor = 1;
    if ('.' == *lText) {
        ++lText;
        for (int lDigits = 0; lDigits < kMaxFractionDigits && IsDigit(*lText); ++lDigits, ++lText) {
            lValue = AppendDigit(lValue, *lText);
            lDivisor *= 10;
        }
        const bool lHasMoreDigits = IsDigit(*lText);
        if (aRound && lHasMoreDigits && *lText > '4') { lValue = FromBits(Bits(lValue) + 1); }
    }
    return Time(lValue, lDivisor, aRound);
}

Time& Time::operator+=(const Time& aOther) {
    mRaw = FromBits(Bits(mRaw) + Bits(aOther.mRaw));
    return *this;
}

Time& Time::operator-=(const Time& aOther) {
    mRaw = FromBits(Bits(mRaw) - Bits(aOther.mRaw));
    return *this;
}

}  // namespace Player
