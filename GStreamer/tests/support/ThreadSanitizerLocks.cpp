// GLib and GStreamer are built without the thread sanitizer, and GLib's mutexes are made of atomic operations that
// it therefore does not see. The functions here come first when a library looks for GLib's of the same name: they
// call those, and tell the sanitizer. GLib's recursive and read-write locks are the C library's, which it knows.

#include <dlfcn.h>
#include <glib-object.h>
#include <sanitizer/tsan_interface.h>

namespace {

/// The function that would have been called.
template <typename Function>
Function* Next(const char* aName) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, aName));
}

void BeforeUnlock(GMutex* aMutex) {
    __tsan_mutex_pre_unlock(aMutex, 0);
    __tsan_mutex_post_unlock(aMutex, 0);
}

void AfterLock(GMutex* aMutex) {
    __tsan_mutex_pre_lock(aMutex, 0);
    __tsan_mutex_post_lock(aMutex, 0, 0);
}

}  // namespace

extern "C" {

void g_mutex_lock(GMutex* aMutex) {
    static auto* const sNext = Next<void(GMutex*)>("g_mutex_lock");
    __tsan_mutex_pre_lock(aMutex, 0);
    sNext(aMutex);
    __tsan_mutex_post_lock(aMutex, 0, 0);
}

gboolean g_mutex_trylock(GMutex* aMutex) {
    static auto* const sNext = Next<gboolean(GMutex*)>("g_mutex_trylock");
    __tsan_mutex_pre_lock(aMutex, __tsan_mutex_try_lock);
    const gboolean lLocked = sNext(aMutex);
    __tsan_mutex_post_lock(aMutex, __tsan_mutex_try_lock | (lLocked ? 0 : __tsan_mutex_try_lock_failed), 0);
    return lLocked;
}

void g_mutex_unlock(GMutex* aMutex) {
    static auto* const sNext = Next<void(GMutex*)>("g_mutex_unlock");
    __tsan_mutex_pre_unlock(aMutex, 0);
    sNext(aMutex);
    __tsan_mutex_post_unlock(aMutex, 0);
}

void g_cond_wait(GCond* aCond, GMutex* aMutex) {
    static auto* const sNext = Next<void(GCond*, GMutex*)>("g_cond_wait");
    BeforeUnlock(aMutex);
    sNext(aCond, aMutex);
    AfterLock(aMutex);
}

gboolean g_cond_wait_until(GCond* aCond, GMutex* aMutex, gint64 aEnd) {
    static auto* const sNext = Next<gboolean(GCond*, GMutex*, gint64)>("g_cond_wait_until");
    BeforeUnlock(aMutex);
    const gboolean lSignalled = sNext(aCond, aMutex, aEnd);
    AfterLock(aMutex);
    return lSignalled;
}

/// Whoever lets go last sees all that was done to the object by those who let go before.
void g_object_unref(gpointer aObject) {
    static auto* const sNext = Next<void(gpointer)>("g_object_unref");
    __tsan_release(aObject);
    __tsan_acquire(aObject);
    sNext(aObject);
}

}  // extern "C"
