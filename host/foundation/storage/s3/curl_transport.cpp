#include "foundation/storage/s3/curl_transport.hpp"

#include "foundation/storage/s3/http_request.hpp"

namespace foundation::storage::s3 {

CurlTransport::CurlTransport(Configuration const& configuration) : configuration_(configuration) {}

AttemptOutcome CurlTransport::get(StoreRequest const& request) {
  HttpRequest http{.url = request.url};
  if (configuration_.requesterPays) http.headers.emplace_back("x-amz-request-payer: requester");
  if (configuration_.credentials) {
    http.signature = Signature{*configuration_.credentials, request.region, "s3"};
    // The SHA-256 of an empty body: libcurl includes it in the signature, but doesn't send it.
    http.headers.emplace_back("x-amz-content-sha256: e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  }
  return sendRequest(http, configuration_.connection);
}

}  // namespace foundation::storage::s3
