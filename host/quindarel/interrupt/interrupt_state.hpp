#pragma once

#include "foundation/core/host_export.hpp"

/// The host's ctrl-c. A signal handler or another thread sets one process-wide pending flag; running work polls it and
/// ends itself. Nothing here blocks or makes a system call.

/// Whether the user has asked to interrupt and nobody has ended the work yet. Safe on every thread and in a signal
/// handler.
KORVAN_HOST_EXPORT bool utIsInterruptPending() noexcept;

/// Sets or clears the pending flag. Safe on every thread and in a signal handler. The host calls it; work only polls.
KORVAN_HOST_EXPORT void utSetInterruptPending(bool pending) noexcept;

/// Sets the calling thread's interrupt mode for the life of the guard, and restores what it found. The mode says
/// whether `utInterruptState::ThrowIfInterruptPending` ends work at once (`on`) or leaves that to the work's own polls
/// (`off`).
class KORVAN_HOST_EXPORT utInterruptMode {
 public:
  /// `off`: work polls and ends itself; `on`: it is ended at once.
  enum Mode { off, on };

  /// Sets the mode of the calling thread, where the guard must also end.
  explicit utInterruptMode(Mode mode) noexcept;
  ~utInterruptMode();
  utInterruptMode(utInterruptMode const&) = delete;
  utInterruptMode& operator=(utInterruptMode const&) = delete;

  /// The calling thread's mode; `on` where no guard lives.
  static Mode current() noexcept;

 private:
  Mode previous_;
};

/// Ends work that the user interrupted.
class KORVAN_HOST_EXPORT utInterruptState {
 public:
  /// Throws `Quindarel::System::InterruptException` with its ctrl-c flag true when an interrupt is pending and the
  /// calling thread's mode is `on`. The flag stays pending: whoever reports the interrupt clears it.
  static void ThrowIfInterruptPending();
};
