#pragma once

#include <gst/gst.h>
#include <pthread.h>

namespace Gst1 {

/// A POSIX mutex rather than a `GMutex`: that one is a bare futex on Linux, which thread sanitizers and
/// valgrind cannot see.
struct StaticMutex {
    pthread_mutex_t mMutex;
};

inline void Init(StaticMutex* aMutex) {
    pthread_mutex_init(&aMutex->mMutex, nullptr);
}
inline void Free(StaticMutex* aMutex) {
    pthread_mutex_destroy(&aMutex->mMutex);
}
inline void LockMutex(StaticMutex* aMutex) {
    pthread_mutex_lock(&aMutex->mMutex);
}
inline gboolean TryLockMutex(StaticMutex* aMutex) {
    return 0 == pthread_mutex_trylock(&aMutex->mMutex);
}
inline void UnlockMutex(StaticMutex* aMutex) {
    pthread_mutex_unlock(&aMutex->mMutex);
}

}  // namespace Gst1

#undef g_static_mutex_lock
#undef g_static_mutex_trylock
#undef g_static_mutex_unlock

#define GStaticMutex ::Gst1::StaticMutex
#define g_static_mutex_init(aMutex) ::Gst1::Init(aMutex)
#define g_static_mutex_free(aMutex) ::Gst1::Free(aMutex)
#define g_static_mutex_lock(aMutex) ::Gst1::LockMutex(aMutex)
#define g_static_mutex_trylock(aMutex) ::Gst1::TryLockMutex(aMutex)
#define g_static_mutex_unlock(aMutex) ::Gst1::UnlockMutex(aMutex)

/// The lock that a 1.x task takes.
#define GStaticRecMutex GRecMutex
#define g_static_rec_mutex_init(aMutex) g_rec_mutex_init(aMutex)
#define g_static_rec_mutex_free(aMutex) g_rec_mutex_clear(aMutex)
#define g_static_rec_mutex_lock(aMutex) g_rec_mutex_lock(aMutex)
#define g_static_rec_mutex_unlock(aMutex) g_rec_mutex_unlock(aMutex)
