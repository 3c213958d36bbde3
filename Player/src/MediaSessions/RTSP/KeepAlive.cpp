#include "MediaSessions/RTSP/KeepAlive.hpp"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

constexpr char kTimeOut[] = "timeout=";
/// More than two requests a second are no signs of life, and what is longer than a day never comes.
constexpr long kShortest = 1;
constexpr long kLongest = 86400;

}  // namespace

void KeepAlive::LearnFrom(const Headers& aHeaders) {
    std::vector<std::string> lParts;
    Split(HeaderValue(aHeaders, "Session"), ';', lParts);
    for (const std::string& lPart : lParts) {
        if (0 != strncasecmp(lPart.c_str(), kTimeOut, sizeof(kTimeOut) - 1)) { continue; }
        const long lSeconds = std::strtol(lPart.c_str() + sizeof(kTimeOut) - 1, nullptr, 10);
        if (lSeconds > 0) { mTimeOut = std::chrono::seconds(std::clamp(lSeconds, kShortest, kLongest)); }
    }
    const auto lPublic = aHeaders.find("Public");
    if (aHeaders.end() == lPublic) { return; }
    std::vector<std::string> lMethods;
    Split(lPublic->second, ',', lMethods);
    mHasGetParameter = std::any_of(lMethods.begin(), lMethods.end(), [](const std::string& aMethod) {
        return 0 == strcasecmp(aMethod.c_str(), "GET_PARAMETER");
    });
}

}  // namespace Player::MediaSessions
