#pragma once

#include <gst/gst.h>

#include "threads/ThreadSafety.hpp"

namespace nsGstVireRtspSrc {

/// A static mutex that is ready from construction on. (GLib locks nothing before its threads are initialised.)
class VIRE_CAPABILITY Mutex {
public:
    Mutex() { g_static_mutex_init(&m_mutex); }
    ~Mutex() { g_static_mutex_free(&m_mutex); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() const VIRE_ACQUIRE() { g_static_mutex_lock(&m_mutex); }
    bool try_lock() const VIRE_TRY_ACQUIRE(true) { return 0 != g_static_mutex_trylock(&m_mutex); }
    void unlock() const VIRE_RELEASE() { g_static_mutex_unlock(&m_mutex); }

private:
    mutable GStaticMutex m_mutex{};
};

/// Holds a mutex for its own lifetime.
class VIRE_SCOPED_CAPABILITY Lock {
public:
    explicit Lock(const Mutex& aMutex) VIRE_ACQUIRE(aMutex) : m_mutex(aMutex) { m_mutex.lock(); }
    ~Lock() VIRE_RELEASE() { m_mutex.unlock(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    const Mutex& m_mutex;
};

/// Holds a recursive mutex for its own lifetime.
class RLock {
public:
    explicit RLock(GStaticRecMutex* aMutex) : m_mutex(aMutex) { g_static_rec_mutex_lock(m_mutex); }
    ~RLock() { g_static_rec_mutex_unlock(m_mutex); }
    RLock(const RLock&) = delete;
    RLock& operator=(const RLock&) = delete;

private:
    GStaticRecMutex* m_mutex;
};

}  // namespace nsGstVireRtspSrc
