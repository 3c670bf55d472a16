#pragma once

#include <csignal>

namespace foundation::core::threads {

/// While it lives, the calling thread takes no signals, and a thread that it starts never will: signals are for the threads that
/// belong to the process, not for helpers. Two system calls.
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
