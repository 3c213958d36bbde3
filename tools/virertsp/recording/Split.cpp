#include "recording/Split.hpp"

#include <glib.h>
#include <strings.h>

#include "Failure.hpp"

namespace Virertsp {

namespace {

struct Unit {
    const char* mName;
    double mSeconds;
    double mBytes;
};

constexpr Unit kUnits[] = {
    {"s", 1, 0},    {"min", 60, 0},    {"h", 3600, 0},      {"kB", 0, 1e3},         {"MB", 0, 1e6},
    {"GB", 0, 1e9}, {"KiB", 0, 1024.}, {"MiB", 0, 1048576}, {"GiB", 0, 1073741824},
};

/// Time stamps count in ticks: a picture that is meant to come at ten seconds may come some of them earlier.
constexpr Player::UInt kTicksPerSecond = 1000;
constexpr long long kTolerance = 2;

constexpr double kMost = 1e15;
constexpr double kMostSeconds = 1e8;

}  // namespace

Split Split::Of(const std::string& aText) {
    gchar* lEnd = nullptr;
    const double lNumber = g_ascii_strtod(aText.c_str(), &lEnd);
    for (const Unit& lUnit : kUnits) {
        if (lEnd == aText.c_str() || 0 != strcasecmp(lEnd, lUnit.mName)) { continue; }
        const double lSeconds = lNumber * lUnit.mSeconds;
        const double lBytes = lNumber * lUnit.mBytes;
        if ((lSeconds >= 1 && lSeconds <= kMostSeconds) || (lBytes >= 1 && lBytes <= kMost)) {
            return {Player::Time::Seconds(lSeconds), static_cast<std::uint64_t>(lBytes)};
        }
    }
    throw Failure(kExitUsage, "--split takes a time such as 10min (s, min, h) or a size such as 100MB (kB to GiB).");
}

bool Split::IsDue(const Player::Time& aLength, std::uint64_t aBytes) const {
    const bool lLong = Player::Time(0) != mLength && aLength + Player::Time(kTolerance, kTicksPerSecond) >= mLength;
    return lLong || (0 != mBytes && aBytes >= mBytes);
}

}  // namespace Virertsp
