#pragma once

#include <mutex>
#include <thread>

#include "foundation/core/threads/thread_annotations.hpp"

namespace foundation::core::threads {

/// A `std::mutex` that clang's thread-safety analysis checks: using a variable declared KORVAN_GUARDED_BY it without
/// holding it is an error. Lock it with MutexLock; costs the same as `std::mutex`.
class KORVAN_CAPABILITY("mutex") Mutex {
  friend class MutexLock;
  std::mutex mutex_;
};

/// Holds a mutex while it lives.
class KORVAN_SCOPED_CAPABILITY MutexLock {
 public:
  /// Blocks until no other thread holds the mutex, which must outlive the lock. Throws `std::system_error` as
  /// `std::mutex::lock` does.
  explicit MutexLock(Mutex& mutex) KORVAN_ACQUIRE(mutex) : lock_(mutex.mutex_) {}

  /// The same for a mutex that is never held for long: tries a few times before it sleeps, since going to sleep and
  /// being woken takes longer than what it waits for.
  struct Spinning {};
  MutexLock(Mutex& mutex, Spinning /*how*/) KORVAN_ACQUIRE(mutex) : lock_(mutex.mutex_, std::defer_lock) {
    for (int attempts = 50; attempts > 0 && !lock_.try_lock(); --attempts) std::this_thread::yield();
    if (!lock_.owns_lock()) lock_.lock();
  }
  ~MutexLock() KORVAN_RELEASE() = default;
  MutexLock(MutexLock const&) = delete;
  MutexLock& operator=(MutexLock const&) = delete;

  /// The lock in the form that `std::condition_variable` waits with; not for unlocking, which the analysis wouldn't
  /// see.
  std::unique_lock<std::mutex>& forWaiting() noexcept { return lock_; }

 private:
  std::unique_lock<std::mutex> lock_;
};

}  // namespace foundation::core::threads
