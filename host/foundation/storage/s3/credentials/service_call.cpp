#include "foundation/storage/s3/credentials/service_call.hpp"

#include <algorithm>
#include <utility>

namespace foundation::storage::s3 {
namespace {

/// Sends one and the same request.
class OneRequest final : public Transport {
 public:
  OneRequest(HttpRequest request, std::string caBundle)
      : request_(std::move(request)), options_{.caBundle = std::move(caBundle)} {}

  AttemptOutcome get(StoreRequest const&) override { return sendRequest(request_, options_); }

 private:
  HttpRequest request_;
  ConnectionOptions options_;
};

}  // namespace

RequestOutcome callService(HttpRequest request, ServiceAccess const& access, ServicePolicy const& policy) {
  request.timeout = policy.attemptTime;
  OneRequest transport(std::move(request), access.caBundle);
  RetryPolicy retries;
  retries.maximumAttempts = policy.maximumAttempts;
  retries.totalTime = policy.totalTime;
  retries.unreachableTime = std::min(retries.unreachableTime, policy.totalTime);
  return getWithRetries(transport, systemClock(), retries, {},
                        [](Response const&) { return std::optional<std::string>(); });
}

std::string successBody(RequestOutcome const& outcome, ServiceAccess const& access, Secrets secrets) {
  auto const* const response = std::get_if<Response>(&outcome.last);
  if (response != nullptr && response->status == 200) return response->body;
  addUserInformation(secrets, access.proxies);
  throw CredentialsError(failureReason(outcome, secrets));
}

}  // namespace foundation::storage::s3
