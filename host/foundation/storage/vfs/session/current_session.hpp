#pragma once

namespace foundation::storage::vfs {

struct Activity;
class SessionCache;

/// The cache of the calling thread's innermost session, or null.
SessionCache* innermostSessionCache() noexcept;

/// The cache through which the storage layer answers the calling thread: the innermost session's, or null if there is
/// none or while that session is calling a provider. So a provider that itself uses the storage layer bypasses the
/// session, whose cache isn't reentrant.
SessionCache* currentSessionCache() noexcept;

/// While it lives, the calling thread works for a session that another thread has opened: its requests are counted there.
class ActivityScope {
 public:
  explicit ActivityScope(Activity& activity) noexcept;
  ~ActivityScope();
  ActivityScope(ActivityScope const&) = delete;
  ActivityScope& operator=(ActivityScope const&) = delete;

 private:
  Activity* previous_;
};

}  // namespace foundation::storage::vfs
