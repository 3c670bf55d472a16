#pragma once

#include <chrono>
#include <string>

#include "foundation/storage/s3/transport.hpp"

namespace foundation::storage::s3 {

/// How often and how long a request is tried.
struct RetryPolicy {
  unsigned attempts = 10;
  std::chrono::milliseconds total{30000};       ///< for a request with all its repetitions and waits
  std::chrono::milliseconds unreachable{8000};  ///< the same, while no connection comes about
  std::chrono::milliseconds firstWait{100};     ///< the longest wait before the first repetition; it doubles with each
  std::chrono::milliseconds longestWait{5000};
};

/// Time and chance, so that a test can bring its own.
class Clock {
 public:
  virtual ~Clock() = default;

  /// Time since some beginning; never goes back.
  virtual std::chrono::milliseconds now() = 0;

  /// Waits. Throws `Quindarel::System::InterruptException` within a twentieth of a second of an interrupt.
  virtual void wait(std::chrono::milliseconds time) = 0;

  /// A number from 0 up to 1, of uniform chance.
  virtual double chance() = 0;
};

/// The system's steady clock. Usable from several threads at once.
Clock& systemClock();

/// The last outcome of a request and what it took.
struct Result {
  Outcome outcome;
  unsigned attempts = 0;
  std::chrono::milliseconds spent{0};
};

/// Makes the request until it is answered with anything but 429, 500, 502, 503 and 504, fails for good, or the policy
/// ends it. Each wait is of uniform chance up to a bound that doubles ("full jitter"), and no shorter than a store asks
/// by Retry-After; a wait that would pass the total time isn't made, and the last outcome stands. Throws
/// `Quindarel::System::InterruptException`.
Result getWithRetries(Transport& transport, Clock& clock, RetryPolicy const& policy, std::string const& url);

}  // namespace foundation::storage::s3
