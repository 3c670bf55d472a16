#pragma once

#include "quindarel/interrupt/interrupt_exception.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"

/// For work that may take long to call repeatedly: throws `Quindarel::System::InterruptException` if an interrupt is
/// pending, whatever the thread's interrupt mode is. Otherwise costs one atomic load.
inline void utThrowIfInterruptPending() {
  if (utIsInterruptPending()) throw Quindarel::System::InterruptException();
}
