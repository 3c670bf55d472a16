#pragma once

#include <string>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/transport.hpp"

namespace foundation::storage::s3 {

/// Requests by libcurl, signed (AWS Signature Version 4) where there are credentials. Connections are kept for the next
/// request, one for each thread at work. Certificates are always verified; redirects aren't followed. A connection must
/// be made within 5 s and may be silent for 10 s; an answer may have 32 MiB.
class CurlTransport : public Transport {
 public:
  explicit CurlTransport(Configuration const& configuration);

  Outcome get(std::string const& url, std::chrono::milliseconds limit) override;

 private:
  Configuration configuration_;
  std::string signing_;  // as CURLOPT_AWS_SIGV4 takes it
};

}  // namespace foundation::storage::s3
