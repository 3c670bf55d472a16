#pragma once

#include "quindarel/interrupt/interrupt_exception.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"

/// The poll of work that may take long: throws `Quindarel::System::InterruptException` when an interrupt is pending, whatever
/// the thread's interrupt mode. Costs one atomic load otherwise.
inline void utThrowIfInterruptPending() {
  if (utIsInterruptPending()) throw Quindarel::System::InterruptException();
}
