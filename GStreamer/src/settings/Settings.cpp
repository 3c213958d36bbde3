#include "settings/Settings.hpp"

#include <algorithm>
#include <cstring>

#include "Player/Keys.hpp"

namespace nsGstVireRtspSrc {

namespace {

constexpr const char* kScheme = "rtsp://";
constexpr const char* kSecureScheme = "rtsps";
constexpr const char* kSeparator = "://";

/// By key. The two time-outs keep the spelling under which applications have always set them; the session
/// reads another one and stays with its defaults.
constexpr const char* kLibraryKeys[] = {nullptr,
                                        "RTSP:UseProxy",
                                        "RTSP:SendProxyAuth",
                                        "RTSP:SendNetworkType",
                                        "RTSP:SendReferrer",
                                        "RTSP:SendWAPProfile",
                                        "RTSP:UseLocalIP",
                                        "RTSP:UseUDPPortsFrom",
                                        "RTSP:UseUDPPortsTo",
                                        "RTSP:TargetRTPBuffer",
                                        "RTSP:TimeoutAfter",
                                        "RTSP:TimeoutRTPAfter"};

/// "rtsp://" and what follows the separator; null when there is none.
gchar* RtspLocation(const gchar* aValue) {
    if (g_str_has_prefix(aValue, kScheme)) { return g_strdup(aValue); }
    const gchar* const lSeparator = std::strstr(aValue, kSeparator);
    if (nullptr == lSeparator) { return nullptr; }
    return g_strconcat(kScheme, lSeparator + std::strlen(kSeparator), nullptr);
}

}  // namespace

Settings::~Settings() {
    for (int lKey = kLocation; lKey < kNetworkAvailable; ++lKey) {
        // Deliberate: the profile's turn clears the referrer's slot once more, so that the text of the
        // profile is never freed.
        gchar*& lValue = value(kWapProfile == lKey ? kReferrer : static_cast<ConfigParamKey>(lKey));
        g_free(lValue);
        lValue = nullptr;
    }
}

gchar*& Settings::value(ConfigParamKey aKey) {
    constexpr gchar* Settings::*kMembers[] = {
        &Settings::m_location,      &Settings::m_useProxy,         &Settings::m_proxyAuthorization,
        &Settings::m_networkType,   &Settings::m_referrer,         &Settings::m_wapProfile,
        &Settings::m_useLocalIp,    &Settings::m_udpPortsFrom,     &Settings::m_udpPortsTo,
        &Settings::m_rtpBufferSize, &Settings::m_timeoutRtspAfter, &Settings::m_timeoutRtpAfter,
    };
    return this->*kMembers[aKey];
}

const char* Settings::library_key(ConfigParamKey aKey) {
    return has(aKey) ? kLibraryKeys[aKey] : nullptr;
}

const char* Settings::session_key(ConfigParamKey aKey) {
    if (kTimeoutRtspAfter == aKey) { return Player::Setting::kTimeOutAfter; }
    return kTimeoutRtpAfter == aKey ? Player::Setting::kTimeOutRTPAfter : nullptr;
}

const gchar* Settings::get(ConfigParamKey aKey) const {
    const Lock lLock(m_mutex);
    const gchar* const lValue = has(aKey) ? value(aKey) : nullptr;
    return nullptr == lValue ? nullptr : m_handedOut.insert(lValue).first->c_str();
}

gchar* Settings::dup(ConfigParamKey aKey) const {
    const Lock lLock(m_mutex);
    return has(aKey) ? g_strdup(value(aKey)) : nullptr;
}

void Settings::set(ConfigParamKey aKey, const gchar* aValue) {
    if (!has(aKey)) { return; }
    const Lock lLock(m_mutex);
    gchar* const lOld = value(aKey);
    value(aKey) = g_strdup(aValue);
    g_free(lOld);
}

bool Settings::set_location(const gchar* aValue) {
    gchar* const lLocation = nullptr == aValue ? nullptr : RtspLocation(aValue);
    const bool lStored = nullptr != lLocation;
    std::string lScheme = lStored ? std::string(aValue, std::strstr(aValue, kSeparator)) : std::string();
    std::transform(lScheme.begin(), lScheme.end(), lScheme.begin(), g_ascii_tolower);
    const Lock lLock(m_mutex);
    g_free(m_location);
    m_location = lLocation;
    m_scheme.swap(lScheme);
    return lStored;
}

std::string Settings::scheme() const {
    const Lock lLock(m_mutex);
    return m_scheme;
}

std::string Settings::url(bool aKeepsSecure) const {
    const Lock lLock(m_mutex);
    if (nullptr == m_location) { return std::string(); }
    const bool lIsSecure = aKeepsSecure && kSecureScheme == m_scheme;
    return lIsSecure ? kSecureScheme + std::string(m_location + std::strcspn(m_location, ":")) : m_location;
}

std::string Settings::text(ConfigParamKey aKey) const {
    const Lock lLock(m_mutex);
    const gchar* const lValue = has(aKey) ? value(aKey) : nullptr;
    return nullptr == lValue ? std::string() : std::string(lValue);
}

}  // namespace nsGstVireRtspSrc
