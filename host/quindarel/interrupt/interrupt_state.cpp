#include "quindarel/interrupt/interrupt_state.hpp"

#include <atomic>

#include "quindarel/interrupt/interrupt_exception.hpp"

namespace {

std::atomic<bool> pendingInterrupt{false};
static_assert(std::atomic<bool>::is_always_lock_free, "the flag is set in signal handlers");

thread_local utInterruptMode::Mode currentMode = utInterruptMode::on;

}  // namespace

// No other memory access is ordered by the flag, so relaxed order is enough: work that sees it a moment later ends a
// moment later.
bool utIsInterruptPending() noexcept {
  return pendingInterrupt.load(std::memory_order_relaxed);
}

void utSetInterruptPending(bool pending) noexcept {
  pendingInterrupt.store(pending, std::memory_order_relaxed);
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
