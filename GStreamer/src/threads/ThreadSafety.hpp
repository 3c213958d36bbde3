#pragma once

/// Which lock guards what, in attributes that clang checks (-Wthread-safety). Other compilers see nothing of them.
#ifdef __clang__
#define VIRE_THREAD_SAFETY(aAttribute) __attribute__((aAttribute))
#else
#define VIRE_THREAD_SAFETY(aAttribute)
#endif

/// A class whose objects are locks.
#define VIRE_CAPABILITY VIRE_THREAD_SAFETY(capability("mutex"))
/// A class whose objects hold a lock as long as they live.
#define VIRE_SCOPED_CAPABILITY VIRE_THREAD_SAFETY(scoped_lockable)
/// A member that is only touched, or whose target is only touched, with the lock held.
#define VIRE_GUARDED_BY(aLock) VIRE_THREAD_SAFETY(guarded_by(aLock))
#define VIRE_PT_GUARDED_BY(aLock) VIRE_THREAD_SAFETY(pt_guarded_by(aLock))
/// A function that is called with the lock held, or without it.
#define VIRE_REQUIRES(aLock) VIRE_THREAD_SAFETY(requires_capability(aLock))
#define VIRE_EXCLUDES(aLock) VIRE_THREAD_SAFETY(locks_excluded(aLock))
/// A function that takes the lock, or lets go of it; of an object's own lock without an argument.
#define VIRE_ACQUIRE(...) VIRE_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define VIRE_TRY_ACQUIRE(...) VIRE_THREAD_SAFETY(try_acquire_capability(__VA_ARGS__))
#define VIRE_RELEASE(...) VIRE_THREAD_SAFETY(release_capability(__VA_ARGS__))
/// A function that goes beyond what the check understands.
#define VIRE_UNCHECKED VIRE_THREAD_SAFETY(no_thread_safety_analysis)
