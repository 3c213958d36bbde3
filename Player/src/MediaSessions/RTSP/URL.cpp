#include "MediaSessions/RTSP/URL.hpp"

namespace Player::URL {

namespace {

constexpr const char* kDefaultPort = "554";

}  // namespace

std::string Authority(const std::string& aURL) {
    const std::size_t lSlashes = aURL.find("//");
    const std::size_t lBegin = std::string::npos == lSlashes ? 0 : lSlashes + 2;
    return aURL.substr(lBegin, aURL.find('/', lBegin) - lBegin);
}

std::pair<std::string, std::string> Address(const std::string& aAuthority) {
    const std::size_t lAt = aAuthority.find('@');
    const std::size_t lBegin = std::string::npos == lAt ? 0 : lAt;
    const std::size_t lColon = aAuthority.find(':', lBegin);
    if (std::string::npos == lColon) { return {aAuthority.substr(lBegin), kDefaultPort}; }
    return {aAuthority.substr(lBegin, lColon - lBegin), aAuthority.substr(lColon + 1)};
}

}  // namespace Player::URL
