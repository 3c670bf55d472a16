#pragma once

/// How kglob handles signals.
namespace kglob {

/// Thrown to end the process by the signal once the stack is unwound.
struct EndedBySignal {
  int signal;
};

/// From now on the first SIGINT sets the host's pending flag, which ends the search in an orderly way; a second one
/// ends the process at once. If the caller had SIGINT ignored, it stays ignored.
void deferInterrupts() noexcept;

/// Ends the process by the signal's default action, so that a shell sees 128 + the signal's number.
[[noreturn]] void endBySignal(int signal) noexcept;

}  // namespace kglob
