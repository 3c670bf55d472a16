#pragma once

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/transport.hpp"

namespace foundation::storage::s3 {

/// Makes requests with libcurl, signed if the configuration has credentials. If the store takes them for expired, they
/// are renewed and the request is made again, once.
class CurlTransport : public Transport {
 public:
  explicit CurlTransport(Configuration const& configuration);

  /// Also throws `CredentialsError`.
  AttemptOutcome get(StoreRequest const& request) override;

 private:
  AttemptOutcome send(StoreRequest const& request, Credentials const* credentials) const;

  Configuration configuration_;
};

}  // namespace foundation::storage::s3
