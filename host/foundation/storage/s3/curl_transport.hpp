#pragma once

#include <string>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/transport.hpp"

namespace foundation::storage::s3 {

/// Makes requests with libcurl, signed (AWS Signature Version 4) if there are credentials. Connections stay open for
/// later requests; each thread uses one at a time. Certificates are always verified; redirects aren't followed. A
/// connection must be made within 5 s and may be idle for 10 s; a response may have 32 MiB.
class CurlTransport : public Transport {
 public:
  explicit CurlTransport(Configuration const& configuration);

  AttemptOutcome get(std::string const& url, std::chrono::milliseconds timeout) override;

 private:
  Configuration configuration_;
  std::string signing_;  // the value of CURLOPT_AWS_SIGV4
};

}  // namespace foundation::storage::s3
