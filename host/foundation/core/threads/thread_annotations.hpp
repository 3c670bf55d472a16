#pragma once

/// Annotations for clang's thread-safety analysis (-Wthread-safety); other compilers see nothing. The analysis works
/// only with mutex types that are annotated themselves, such as Mutex and MutexLock of mutex.hpp; `std::mutex` is not.
#ifdef __clang__
#define KORVAN_THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#define KORVAN_THREAD_ANNOTATION(attribute)
#endif

/// A class whose objects are mutexes; `kind` is what diagnostics call them.
#define KORVAN_CAPABILITY(kind) KORVAN_THREAD_ANNOTATION(capability(kind))

/// A class whose objects hold a mutex while they live.
#define KORVAN_SCOPED_CAPABILITY KORVAN_THREAD_ANNOTATION(scoped_lockable)

/// A variable that is read and written only while `mutex` is held.
#define KORVAN_GUARDED_BY(mutex) KORVAN_THREAD_ANNOTATION(guarded_by(mutex))

/// A function that must be called with `mutex` held. On a lambda it goes after the parameter list.
#define KORVAN_REQUIRES(mutex) KORVAN_THREAD_ANNOTATION(requires_capability(mutex))

/// A function that locks the mutex given, or its own object, and returns with it held.
#define KORVAN_ACQUIRE(...) KORVAN_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))

/// A function that unlocks the mutex given, or its own object, or what its own object holds.
#define KORVAN_RELEASE(...) KORVAN_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
