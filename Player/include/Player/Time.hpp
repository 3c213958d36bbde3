#pragma once

#include "Player/Types.hpp"

namespace Player {

/// Seconds as a signed 32.32 fixed-point number: the raw value counts units of 2^-32 s.
/// A resolution (ticks per second, for example 90000) is given only where ticks come in or go out.
class Time {
public:
    Time() = default;
    Time(const Time&) = default;
    Time& operator=(const Time&) = default;
    /// Takes the raw fixed-point value.
    explicit Time(long long aRaw) : mRaw(aRaw) {}
    /// `aValue` ticks of 1 / `aResolution` s; the fraction is cut, or rounded to nearest with `aRound`.
    /// A resolution of 0 yields zero time.
    Time(long long aValue, UInt aResolution, bool aRound = false);

    /// That many seconds, rounded towards zero; what a time can't hold becomes the nearest that it can.
    static Time Seconds(double aSeconds);
    double ToSeconds() const;

    /// The raw fixed-point value.
    long long Get() const { return mRaw; }
    /// The time in units of `aDiv` / `aMul` seconds, cut or rounded; 0 when `aDiv` is 0.
    /// Meant for times that are not negative.
    long long Scale(long long aMul, UInt aDiv, bool aRound = false) const;
    long long NanoSeconds(bool aRound = false) const { return Scale(1000000000, 1, aRound); }

    /// Wall-clock time since the epoch. Throws `SystemErr` `kClockFailed` when the clock can't be read.
    static Time Now();
    /// Decimal seconds such as "12.5", at most 9 fraction digits; leading spaces are skipped, anything
    /// that is no number is 0, and so is every text that begins with '-'.
    static Time WithDecimalCString(const char* aText, bool aRound = false);

    Time& operator+=(const Time& aOther);
    Time& operator-=(const Time& aOther);

    friend Time operator+(Time aA, const Time& aB) { return aA += aB; }
    friend Time operator-(Time aA, const Time& aB) { return aA -= aB; }
    friend bool operator==(const Time& aA, const Time& aB) { return aA.mRaw == aB.mRaw; }
    friend bool operator!=(const Time& aA, const Time& aB) { return aA.mRaw != aB.mRaw; }
    friend bool operator<(const Time& aA, const Time& aB) { return aA.mRaw < aB.mRaw; }
    friend bool operator>(const Time& aA, const Time& aB) { return aA.mRaw > aB.mRaw; }
    friend bool operator>=(const Time& aA, const Time& aB) { return aA.mRaw >= aB.mRaw; }

private:
    long long mRaw = 0;
};

}  // namespace Player
