#pragma once

#include "kglob.h"

/// How kglob handles signals.
namespace kglob {

/// Thrown to end the process by the signal once the stack is unwound.
struct EndedBySignal {
  int signal;
};

/// From now on the first SIGINT is remembered and cancels the search; a second one ends the process at once. If the
/// caller had SIGINT ignored, it stays ignored.
void deferInterrupts() noexcept;

/// The search that an interrupt cancels, one that came before this call included; null for none.
void cancelOnInterrupt(kglob_search* search) noexcept;

/// Whether there was an interrupt.
bool isInterrupted() noexcept;

/// Ends the process by the signal's default action, so that a shell sees 128 + the signal's number.
[[noreturn]] void endBySignal(int signal) noexcept;

}  // namespace kglob
