#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "foundation/storage/s3/transport.hpp"

namespace foundation::storage::s3 {

/// How often and for how long a request is tried.
struct RetryPolicy {
  unsigned maximumAttempts = 10;
  std::chrono::milliseconds totalTime{30000};       ///< when no further attempt is made
  std::chrono::milliseconds unreachableTime{8000};  ///< the same, while no connection can be made
  std::chrono::milliseconds firstBackOff{100};      ///< upper bound of the first wait; it doubles with each attempt
  std::chrono::milliseconds longestBackOff{5000};   ///< where the doubling stops
};

/// Time and randomness, which a test replaces with its own.
class Clock {
 public:
  virtual ~Clock() = default;

  /// The time since an arbitrary start; never goes backwards.
  virtual std::chrono::milliseconds now() = 0;

  /// Waits. Throws `Quindarel::System::InterruptException` within 50 ms of an interrupt.
  virtual void wait(std::chrono::milliseconds time) = 0;

  /// A random number, uniformly distributed over [0, 1).
  virtual double random01() = 0;
};

/// The system's steady clock. Safe to use from several threads at once.
Clock& systemClock();

/// The outcome of a request with its retries.
struct RequestOutcome {
  AttemptOutcome last;
  unsigned attempts = 0;
  std::chrono::milliseconds elapsed{0};
};

/// Looks at a response with status 200 and returns the reason if it is malformed: it may have been cut off.
using ResponseCheck = std::function<std::optional<std::string>(Response const&)>;

/// Makes a GET request, and retries it after a response of 429, 500, 502, 503 or 504, after a malformed one, and after a
/// failure that isn't permanent, as long as the policy allows. Each wait is random up to the current back-off ("full
/// jitter"), and at least what the store asks for by Retry-After. No attempt begins after the total time, but one that
/// has begun is never cut short. If a wait would exceed the total time, the last outcome is returned at once. A
/// malformed response becomes a `Failure` of the kind `lost`. Throws `Quindarel::System::InterruptException`.
RequestOutcome getWithRetries(Transport& transport, Clock& clock, RetryPolicy const& policy,
                              StoreRequest const& request, ResponseCheck const& check);

}  // namespace foundation::storage::s3
