#pragma once

#include <cerrno>
#include <utility>

#include <unistd.h>

#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::file {

/// Owns a file descriptor; none if the value is negative.
class Descriptor {
 public:
  explicit Descriptor(int value = -1) noexcept : value_(value) {}
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }
  Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }

  int get() const noexcept { return value_; }

 private:
  int value_;
};

/// The result of a system call that a signal may interrupt, as on a network file system: the call is repeated, unless
/// the signal was an interrupt, which throws `Quindarel::System::InterruptException`.
template <class Call>
auto uninterrupted(Call call) {
  for (;;) {
    auto const result = call();
    if (result >= 0 || errno != EINTR) return result;
    utThrowIfInterruptPending();
  }
}

}  // namespace foundation::storage::file
