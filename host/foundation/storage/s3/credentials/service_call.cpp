#include "foundation/storage/s3/credentials/service_call.hpp"

#include <algorithm>

#include "foundation/storage/s3/curl_transport.hpp"

namespace foundation::storage::s3 {
namespace {

/// Sends the same request, whatever the URL.
class OneRequest final : public Transport {
 public:
  OneRequest(HttpRequest const& request, std::string const& caBundle, std::chrono::milliseconds attemptTime)
      : request_(request), caBundle_(caBundle), attemptTime_(attemptTime) {}

  AttemptOutcome get(std::string const&, std::chrono::milliseconds timeout) override {
    return sendRequest(request_, caBundle_, std::min(timeout, attemptTime_));
  }

 private:
  HttpRequest const& request_;
  std::string const& caBundle_;
  std::chrono::milliseconds attemptTime_;
};

}  // namespace

RequestOutcome callService(HttpRequest const& request, std::string const& caBundle, ServicePolicy const& policy) {
  OneRequest transport(request, caBundle, policy.attemptTime);
  RetryPolicy retries;
  retries.maximumAttempts = policy.maximumAttempts;
  retries.totalTime = policy.totalTime;
  retries.unreachableTime = std::min(retries.unreachableTime, policy.totalTime);
  return getWithRetries(transport, systemClock(), retries, request.url);
}

std::string const& successBody(RequestOutcome const& outcome, Secrets const& secrets) {
  auto const* const response = std::get_if<Response>(&outcome.last);
  if (response == nullptr || response->status != 200) throw CredentialsError(failureReason(outcome, secrets));
  return response->body;
}

}  // namespace foundation::storage::s3
