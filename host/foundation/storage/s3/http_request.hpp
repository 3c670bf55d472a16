#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/transport.hpp"

namespace foundation::storage::s3 {

/// What a request is signed with (AWS Signature Version 4).
struct Signature {
  Credentials credentials;
  std::string region;
  std::string service;
};

struct HttpRequest {
  std::string method = "GET";  ///< "GET", "PUT" or "POST"
  std::string url;
  std::vector<std::string> headers = {};  ///< "name: value"
  std::string body = {};
  std::optional<Signature> signature = {};
  bool direct = false;                   ///< never through a proxy
  std::chrono::milliseconds timeout{0};  ///< for the whole attempt; 0 for no limit
};

/// Makes one attempt at a request with libcurl. Connections stay open for later requests; each thread uses one at a
/// time. Certificates are always verified; redirects aren't followed; a response may have 32 MiB. Counts the request in
/// the thread's read session. Throws `Quindarel::System::InterruptException` within 50 ms of the interrupt, whatever
/// the request waits for, and `std::bad_alloc`.
AttemptOutcome sendRequest(HttpRequest const& request, ConnectionOptions const& options);

}  // namespace foundation::storage::s3
