#pragma once

#include <gst/gst.h>

#include <atomic>
#include <string>

#include "settings/Profile.hpp"
#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// The properties that came after the first fourteen, and their values. Left alone they change nothing, and the
/// library hears of none. From any thread.
class Options {
public:
    /// Ids of properties, apart from the first fourteen's.
    enum Id : guint { kProfile = 101, kUserId, kUserPw, kTransports, kUdpBufferSize, kStats, kTlsAuthorities, kEnd };

    static void install(GObjectClass* aClass);
    /// Whether it has a value here; the statistics are the player's.
    static bool has(guint aId) { return kProfile <= aId && aId < kEnd && kStats != aId; }
    /// Under which key the library knows it.
    static const char* library_key(guint aId);

    Options();
    ~Options();
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

    /// Returns the value for the library.
    std::string set(guint aId, const GValue* aValue);
    void get(guint aId, GValue* aValue) const;
    /// The value that `set` returned for the library; empty for a property at its default.
    std::string text(guint aId) const;

    const Profile& profile() const { return *m_profile; }

private:
    Mutex m_mutex;  ///< A leaf.
    GValue m_values[kEnd - kProfile] VIRE_GUARDED_BY(m_mutex) = {};
    std::atomic<const Profile*> m_profile{&Profile::Named(Profile::kClassic)};
};

}  // namespace nsGstVireRtspSrc
