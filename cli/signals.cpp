#include "cli/signals.hpp"

#include <csignal>

#include <pthread.h>
#include <unistd.h>

#include "quindarel/interrupt/interrupt_state.hpp"

namespace kglob {
namespace {

// Taken before any signal can arrive: a handler must not be what makes the dynamic linker look a function up.
auto* const setInterruptPending = &utSetInterruptPending;

extern "C" void onInterrupt(int) {
  setInterruptPending(true);
}

}  // namespace

void deferInterrupts() noexcept {
  struct sigaction found = {};
  if (sigaction(SIGINT, nullptr, &found) == 0 && found.sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = onInterrupt;
  // The default action comes back with the first signal; no SA_RESTART, so that a blocked write ends too.
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGINT, &action, nullptr);
}

void endBySignal(int signal) noexcept {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  kill(getpid(), signal);
  _exit(128 + signal);
}

}  // namespace kglob
