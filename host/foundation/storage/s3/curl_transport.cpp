#include "foundation/storage/s3/curl_transport.hpp"

#include "foundation/storage/s3/http_request.hpp"

namespace foundation::storage::s3 {

namespace {

// Whether the store takes the request's credentials for expired, by its error code.
bool isExpiry(AttemptOutcome const& outcome) {
  auto const* const response = std::get_if<Response>(&outcome);
  return response != nullptr && (response->status == 400 || response->status == 401 || response->status == 403) &&
         (response->body.find(">ExpiredToken<") != std::string::npos ||
          response->body.find(">TokenRefreshRequired<") != std::string::npos);
}

}  // namespace

CurlTransport::CurlTransport(Configuration const& configuration) : configuration_(configuration) {}

AttemptOutcome CurlTransport::get(StoreRequest const& request) {
  if (!configuration_.credentials) return send(request, nullptr);
  auto const credentials = configuration_.credentials->current();
  AttemptOutcome outcome = send(request, credentials.get());
  if (!isExpiry(outcome) || !configuration_.credentials->reject(credentials)) return outcome;
  return send(request, configuration_.credentials->current().get());
}

AttemptOutcome CurlTransport::send(StoreRequest const& request, Credentials const* credentials) const {
  HttpRequest http{.url = request.url};
  if (configuration_.requesterPays) http.headers.emplace_back("x-amz-request-payer: requester");
  if (credentials != nullptr) {
    http.signature = Signature{*credentials, request.region, "s3"};
    // The SHA-256 of an empty body: libcurl includes it in the signature, but doesn't send it.
    http.headers.emplace_back("x-amz-content-sha256: e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  }
  return sendRequest(http, configuration_.connection);
}

}  // namespace foundation::storage::s3
