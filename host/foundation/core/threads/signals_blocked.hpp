#pragma once

#include <csignal>

namespace foundation::core::threads {

/// While it lives, the calling thread blocks all signals, and so does every thread that it starts, for good: signals
/// are for the process's own threads, not for helpers. Two system calls.
class SignalsBlocked {
 public:
  SignalsBlocked() noexcept {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(SignalsBlocked const&) = delete;
  SignalsBlocked& operator=(SignalsBlocked const&) = delete;

 private:
  sigset_t before_;
};

}  // namespace foundation::core::threads
