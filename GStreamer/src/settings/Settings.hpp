#pragma once

#include <atomic>
#include <set>
#include <string>

#include "settings/ConfigParamKey.hpp"
#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// The string settings of an element, keys `kLocation` to `kTimeoutRtpAfter`, each a copy or null when unset.
/// From any thread.
class Settings {
public:
    Settings() = default;
    ~Settings();
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    /// Whether the key is one of the string settings.
    static bool has(ConfigParamKey aKey) { return kLocation <= aKey && aKey < kNetworkAvailable; }
    /// Under which key the library knows the setting; null for the location.
    static const char* library_key(ConfigParamKey aKey);
    /// Under which key a session looks for a time-out; null for others.
    static const char* session_key(ConfigParamKey aKey);

    /// The text, for those who cannot be given a copy: good as long as this object lives, also when the key is set
    /// again. Null when unset and for other keys.
    const gchar* get(ConfigParamKey aKey) const;
    /// A copy for the caller, or null.
    gchar* dup(ConfigParamKey aKey) const;
    /// Null clears.
    void set(ConfigParamKey aKey, const gchar* aValue);

    /// Stores `aValue` as an RTSP location, whatever its scheme; text without "://" leaves none.
    /// Whether there is a location now.
    bool set_location(const gchar* aValue);
    /// The stored text, or an empty one.
    std::string text(ConfigParamKey aKey) const;
    std::string location() const { return text(kLocation); }
    /// What is played: the stored location, or, where the scheme set was "rtsps", that with it.
    std::string url(bool aKeepsSecure) const;
    /// What stood before "://" in the location that was set, in lower case; empty without a location.
    std::string scheme() const;

private:
    Mutex m_mutex;
    /// Where the text of a string setting is.
    gchar*& value(ConfigParamKey aKey) VIRE_REQUIRES(m_mutex);
    const gchar* value(ConfigParamKey aKey) const VIRE_REQUIRES(m_mutex) {
        return const_cast<Settings*>(this)->value(aKey);
    }

    // By key.
    gchar* m_location VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_useProxy VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_proxyAuthorization VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_networkType VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_referrer VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_wapProfile VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_useLocalIp VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_udpPortsFrom VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_udpPortsTo VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_rtpBufferSize VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_timeoutRtspAfter VIRE_GUARDED_BY(m_mutex) = nullptr;
    gchar* m_timeoutRtpAfter VIRE_GUARDED_BY(m_mutex) = nullptr;
    /// What `get` has handed out, each text once.
    mutable std::set<std::string> m_handedOut VIRE_GUARDED_BY(m_mutex);
    std::string m_scheme VIRE_GUARDED_BY(m_mutex);
};

}  // namespace nsGstVireRtspSrc
