#include "quindarel/interrupt/interrupt_state.hpp"

#include "quindarel/interrupt/interrupt_exception.hpp"

namespace {

std::atomic<bool> pendingInterrupt{false};
static_assert(std::atomic<bool>::is_always_lock_free, "the flag is set in signal handlers");

thread_local utInterruptMode::Mode currentMode = utInterruptMode::on;

// Polled for each entry of a listing. This TLS model makes that a plain load, where the default one makes it a function
// call.
[[gnu::tls_model("initial-exec")]] thread_local std::atomic<bool> const* currentFlag = nullptr;

}  // namespace

// No other memory access is ordered by the flags, so relaxed order is enough: work that sees one a moment later ends a
// moment later.
bool utIsInterruptPending() noexcept {
  if (pendingInterrupt.load(std::memory_order_relaxed)) return true;
  return currentFlag != nullptr && currentFlag->load(std::memory_order_relaxed);
}

void utSetInterruptPending(bool pending) noexcept {
  pendingInterrupt.store(pending, std::memory_order_relaxed);
}

utInterruptScope::utInterruptScope(std::atomic<bool> const* flag) noexcept : previous_(currentFlag) {
  currentFlag = flag;
}

utInterruptScope::~utInterruptScope() {
  currentFlag = previous_;
}

std::atomic<bool> const* utInterruptScope::current() noexcept {
  return currentFlag;
}

utInterruptMode::utInterruptMode(Mode mode) noexcept : previous_(currentMode) {
  currentMode = mode;
}

utInterruptMode::~utInterruptMode() {
  currentMode = previous_;
}

utInterruptMode::Mode utInterruptMode::current() noexcept {
  return currentMode;
}

void utInterruptState::ThrowIfInterruptPending() {
  if (currentMode == utInterruptMode::on && utIsInterruptPending()) throw Quindarel::System::InterruptException(true);
}
