#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "foundation/storage/s3/error_mapping.hpp"
#include "foundation/storage/s3/http_request.hpp"
#include "foundation/storage/s3/retry.hpp"

namespace foundation::storage::s3 {

/// What all requests to services that issue credentials have in common.
struct ServiceAccess {
  std::string caBundle = {};              ///< a file of certificates to trust; empty for the system's
  std::vector<std::string> proxies = {};  ///< URLs, whose passwords are blotted out of messages
};

/// How long such a service is waited for.
struct ServicePolicy {
  std::chrono::milliseconds attemptTime{10000};
  std::chrono::milliseconds totalTime{20000};  ///< when no further attempt is made
  unsigned maximumAttempts = 3;
};

/// The outcome of the request, retried as requests to the store are. Throws
/// `Quindarel::System::InterruptException`.
RequestOutcome callService(HttpRequest request, ServiceAccess const& access, ServicePolicy const& policy = {});

/// The body of a response with status 200. Throws `CredentialsError` for every other outcome: the message has the
/// response's words without the secrets, those of the access included.
std::string successBody(RequestOutcome const& outcome, ServiceAccess const& access, Secrets secrets);

}  // namespace foundation::storage::s3
