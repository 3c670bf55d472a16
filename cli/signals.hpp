#pragma once

/// How kglob meets signals.
namespace kglob {

/// Thrown to end the process as if the signal had ended it, after everything on the way out was put in order.
struct EndedBySignal {
  int signal;
};

/// From now on the first SIGINT sets the host's pending flag, which ends the search in an orderly way; a second one
/// ends the process at once. A SIGINT that the caller had ignored stays ignored.
void deferInterrupts() noexcept;

/// Ends the process by the signal's default action, so that a shell sees 128 + its number.
[[noreturn]] void endBySignal(int signal) noexcept;

}  // namespace kglob
