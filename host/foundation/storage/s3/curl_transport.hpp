#pragma once

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/transport.hpp"

namespace foundation::storage::s3 {

/// Makes requests with libcurl, signed if the configuration has credentials.
class CurlTransport : public Transport {
 public:
  explicit CurlTransport(Configuration const& configuration);

  AttemptOutcome get(StoreRequest const& request) override;

 private:
  Configuration configuration_;
};

}  // namespace foundation::storage::s3
