#pragma once

#include <strings.h>

#include <map>
#include <string>

namespace Player::MediaSessions {

/// Less-than without regard to case.
struct LTI {
    bool operator()(const std::string& aA, const std::string& aB) const {
        return strcasecmp(aA.c_str(), aB.c_str()) < 0;
    }
};

/// Header values by header name, whose case does not count (RFC 2326 section 4.2).
using Headers = std::map<std::string, std::string, LTI>;

/// The value, or empty text when the header is absent.
inline std::string HeaderValue(const Headers& aHeaders, const std::string& aName) {
    const auto lHeader = aHeaders.find(aName);
    return lHeader == aHeaders.end() ? std::string() : lHeader->second;
}

/// Whether the server ends the connection after this message.
inline bool ClosesConnection(const Headers& aHeaders) {
    constexpr char kClose[] = "Close";
    return 0 == strncasecmp(HeaderValue(aHeaders, "Connection").c_str(), kClose, sizeof(kClose) - 1);
}

}  // namespace Player::MediaSessions
