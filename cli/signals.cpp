#include "cli/signals.hpp"

#include <atomic>
#include <csignal>

#include <pthread.h>
#include <unistd.h>

namespace kglob {
namespace {

// Looked up before any signal can arrive: the dynamic linker's lazy binding isn't safe in a signal handler.
auto* const cancel = &kglob_cancel;

// The handler may run on any thread that doesn't block signals, and between any two instructions.
std::atomic<bool> interrupted{false};
std::atomic<kglob_search*> running{nullptr};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<kglob_search*>::is_always_lock_free);

extern "C" void onInterrupt(int) {
  interrupted = true;
  cancel(running);
}

}  // namespace

void cancelOnInterrupt(kglob_search* search) noexcept {
  running = search;
  if (interrupted) cancel(search);
}

bool isInterrupted() noexcept {
  return interrupted;
}

void deferInterrupts() noexcept {
  struct sigaction found = {};
  if (sigaction(SIGINT, nullptr, &found) == 0 && found.sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = onInterrupt;
  // The first signal restores the default action. No SA_RESTART, so that a blocked write ends too.
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
