#pragma once

#include <chrono>
#include <string>

#include "foundation/storage/s3/error_mapping.hpp"
#include "foundation/storage/s3/retry.hpp"

namespace foundation::storage::s3 {

/// How long a service that issues credentials is waited for.
struct ServicePolicy {
  std::chrono::milliseconds attemptTime{10000};
  std::chrono::milliseconds totalTime{20000};  ///< for all attempts and the waits between them
  unsigned maximumAttempts = 3;
};

/// The outcome of the request, retried as requests to the store are. Throws
/// `Quindarel::System::InterruptException`.
RequestOutcome callService(HttpRequest const& request, std::string const& caBundle, ServicePolicy const& policy = {});

/// The body of a response with status 200. Throws `CredentialsError` for every other outcome: the message has the
/// response's words without the secrets.
std::string const& successBody(RequestOutcome const& outcome, Secrets const& secrets);

}  // namespace foundation::storage::s3
