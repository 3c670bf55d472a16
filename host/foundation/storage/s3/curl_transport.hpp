#pragma once

#include <string>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/transport.hpp"

namespace foundation::storage::s3 {

/// Makes one attempt at the request with libcurl, aborted after `timeout`. Connections stay open for later requests; each
/// thread uses one at a time. Certificates are always verified, by those in the file `caBundle` if it isn't empty;
/// redirects aren't followed. A connection must be made within 5 s and may be idle for 10 s; a response may have 32 MiB.
/// Counts the request in the thread's read session. Throws `Quindarel::System::InterruptException` within 50 ms of the
/// interrupt, and `std::bad_alloc`.
AttemptOutcome sendRequest(HttpRequest const& request, std::string const& caBundle, std::chrono::milliseconds timeout);

/// Requests to the store, signed if the configuration has credentials. If the store takes them for expired, they are
/// renewed and the request is made again, once.
class CurlTransport : public Transport {
 public:
  explicit CurlTransport(Configuration configuration);

  /// Also throws `CredentialsError`.
  AttemptOutcome get(std::string const& url, std::chrono::milliseconds timeout) override;

 private:
  Configuration configuration_;
};

}  // namespace foundation::storage::s3
