#pragma once

#include "interrupt/interrupt_exception.hpp"
#include "interrupt/interrupt_state.hpp"

namespace foundation::storage::vfs {

/// The poll of everything in the storage layer that may take long: throws `Quindarel::System::InterruptException` when
/// an interrupt is pending, whatever the thread's interrupt mode. Costs one atomic load otherwise.
inline void throwIfInterruptPending() {
  if (utIsInterruptPending()) throw Quindarel::System::InterruptException();
}

}  // namespace foundation::storage::vfs
