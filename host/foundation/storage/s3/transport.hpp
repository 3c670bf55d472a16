#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>

namespace foundation::storage::s3 {

/// A server's response, whatever its status.
struct Response {
  long status = 0;  ///< HTTP status code
  std::string body;
  std::string requestId;                           ///< from the headers; empty if they have none
  std::string region;                              ///< the bucket's region, from the headers; empty if they have none
  std::optional<std::chrono::seconds> retryAfter;  ///< how long the store asks the client to wait
};

/// Why there is no response, or no complete one.
struct Failure {
  enum class Kind {
    unreachable,  ///< no connection could be made
    lost,         ///< the connection broke or timed out, or what arrived isn't a well-formed response
    permanent,    ///< would fail again: an untrusted certificate, an invalid proxy, a response that is too large
  };
  Kind kind = Kind::permanent;
  std::string reason;  ///< for people to read; may contain secrets, which `redact` removes
};

/// The outcome of one attempt at a request.
using AttemptOutcome = std::variant<Response, Failure>;

/// A GET request to a store.
struct StoreRequest {
  std::string url;     ///< in the form that `canonicalQuery` and `bucketUrl` give
  std::string region;  ///< the region to sign for
};

/// Makes single requests to a store. Safe to use from several threads at once.
class Transport {
 public:
  virtual ~Transport() = default;

  /// One attempt. Counts the request in the thread's read session. Throws `Quindarel::System::InterruptException`
  /// within 50 ms of the interrupt, and `std::bad_alloc`.
  virtual AttemptOutcome get(StoreRequest const& request) = 0;
};

}  // namespace foundation::storage::s3
