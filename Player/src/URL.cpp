#include "Player/URL.hpp"

#include <algorithm>

namespace Player::URL {

namespace {

constexpr const char* kDefaultPort = "554";

/// Positions in the URL, or in an authority that stands alone.
struct Place {
    std::size_t mBegin;
    std::size_t mHost;  ///< Where the authority begins when it has no user information.
    std::size_t mEnd;

    explicit Place(const std::string& aURL) {
        const std::size_t lSlashes = aURL.find("//");
        mBegin = std::string::npos == lSlashes ? 0 : lSlashes + 2;
        mEnd = std::min(aURL.find('/', mBegin), aURL.size());
        const std::size_t lAt = mBegin == mEnd ? std::string::npos : aURL.rfind('@', mEnd - 1);
        mHost = std::string::npos == lAt || lAt < mBegin ? mBegin : lAt + 1;
    }
};

}  // namespace

std::string Authority(const std::string& aURL) {
    const Place lPlace(aURL);
    return aURL.substr(lPlace.mBegin, lPlace.mEnd - lPlace.mBegin);
}

std::pair<std::string, std::string> Address(const std::string& aAuthority) {
    const std::size_t lAt = aAuthority.find('@');
    const std::size_t lBegin = std::string::npos == lAt ? 0 : lAt;
    const std::size_t lColon = aAuthority.find(':', lBegin);
    if (std::string::npos == lColon) { return {aAuthority.substr(lBegin), kDefaultPort}; }
    return {aAuthority.substr(lBegin, lColon - lBegin), aAuthority.substr(lColon + 1)};
}

std::string UserInfoText(const std::string& aURL) {
    const Place lPlace(aURL);
    return lPlace.mHost == lPlace.mBegin ? std::string() : aURL.substr(lPlace.mBegin, lPlace.mHost - 1 - lPlace.mBegin);
}

std::string WithoutUserInfo(const std::string& aURL) {
    const Place lPlace(aURL);
    return aURL.substr(0, lPlace.mBegin) + aURL.substr(lPlace.mHost);
}

}  // namespace Player::URL
