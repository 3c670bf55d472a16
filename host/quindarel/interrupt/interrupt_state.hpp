#pragma once

#include <atomic>

#include "foundation/core/host_export.hpp"

/// The host's handling of ctrl-c. A signal handler or another thread sets a process-wide pending flag; running work
/// polls it and ends itself. A flag of its own (`utInterruptScope`) lets one piece of work be interrupted and no other.
/// Nothing here blocks or makes a system call.

/// Whether the user has requested an interrupt that the host hasn't cleared yet, or the flag of the calling thread's
/// `utInterruptScope` is set. Thread-safe and async-signal-safe; costs two loads.
KORVAN_HOST_EXPORT bool utIsInterruptPending() noexcept;

/// Sets or clears the pending flag. For the host; work only polls. Thread-safe and async-signal-safe.
KORVAN_HOST_EXPORT void utSetInterruptPending(bool pending) noexcept;

/// While it lives, an interrupt is also pending on the calling thread whenever `flag` is set, so that the thread's work
/// can be interrupted without that of others. Scopes nest: the innermost flag counts. A thread that works for another
/// one opens a scope with the other's `current()`.
class KORVAN_HOST_EXPORT utInterruptScope {
 public:
  /// Belongs to the calling thread, on which it must also be destroyed. `flag` must outlive it, and may be null: then
  /// only the process-wide flag counts. Any thread and any signal handler may set it.
  explicit utInterruptScope(std::atomic<bool> const* flag) noexcept;
  ~utInterruptScope();
  utInterruptScope(utInterruptScope const&) = delete;
  utInterruptScope& operator=(utInterruptScope const&) = delete;

  /// The flag of the calling thread's innermost scope, or null.
  static std::atomic<bool> const* current() noexcept;

 private:
  std::atomic<bool> const* previous_;
};

/// Sets the calling thread's interrupt mode for the lifetime of the guard and then restores the previous one. The mode
/// says whether `utInterruptState::ThrowIfInterruptPending` ends work at once (`on`) or leaves that to the work's own
/// polls (`off`).
class KORVAN_HOST_EXPORT utInterruptMode {
 public:
  /// `off`: work polls and ends itself; `on`: work is ended at once.
  enum Mode { off, on };

  /// Sets the mode of the calling thread, on which the guard must also be destroyed.
  explicit utInterruptMode(Mode mode) noexcept;
  ~utInterruptMode();
  utInterruptMode(utInterruptMode const&) = delete;
  utInterruptMode& operator=(utInterruptMode const&) = delete;

  /// The calling thread's mode; `on` if there is no guard.
  static Mode current() noexcept;

 private:
  Mode previous_;
};

/// Ends work that the user interrupted.
class KORVAN_HOST_EXPORT utInterruptState {
 public:
  /// Throws `Quindarel::System::InterruptException(true)` if an interrupt is pending and the calling thread's mode is
  /// `on`. The pending flag remains set; whoever reports the interrupt clears it.
  static void ThrowIfInterruptPending();
};
