#pragma once

#include <gst/gst.h>

namespace nsGstVireRtspSrc {

/// Holds a static mutex for its own lifetime. (GLib locks nothing before its threads are initialised.)
class Lock {
public:
    explicit Lock(GStaticMutex* aMutex) : m_mutex(aMutex) { g_static_mutex_lock(m_mutex); }
    ~Lock() { g_static_mutex_unlock(m_mutex); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    GStaticMutex* m_mutex;
};

/// The same for a recursive mutex.
class RLock {
public:
    explicit RLock(GStaticRecMutex* aMutex) : m_mutex(aMutex) { g_static_rec_mutex_lock(m_mutex); }
    ~RLock() { g_static_rec_mutex_unlock(m_mutex); }
    RLock(const RLock&) = delete;
    RLock& operator=(const RLock&) = delete;

private:
    GStaticRecMutex* m_mutex;
};

/// A static mutex that is ready from construction on.
class Mutex {
public:
    Mutex() { g_static_mutex_init(&m_mutex); }
    ~Mutex() { g_static_mutex_free(&m_mutex); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    operator GStaticMutex*() const { return &m_mutex; }

private:
    mutable GStaticMutex m_mutex{};
};

}  // namespace nsGstVireRtspSrc
