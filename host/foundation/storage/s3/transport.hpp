#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "foundation/storage/s3/credentials/credentials.hpp"

namespace foundation::storage::s3 {

/// An HTTP request, to the store or to a service that issues credentials.
struct HttpRequest {
  std::string method = "GET";
  std::string url = {};
  std::vector<std::string> headers = {};  ///< "name: value"; all are signed
  std::string body = {};
  Credentials const* credentials = nullptr;  ///< what to sign it with (AWS Signature Version 4); null: not signed
  std::string region = {};                   ///< for the signature
  std::string service = {};                  ///< for the signature, such as "s3"
  bool viaProxy = true;                      ///< whether the environment's proxy settings apply
};

/// A response, whatever its status.
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
    lost,         ///< the connection broke or timed out
    permanent,    ///< would fail again: an untrusted certificate, not HTTP, a response that is too large
  };
  Kind kind = Kind::permanent;
  std::string reason;  ///< for people to read
};

/// The outcome of one attempt at a request.
using AttemptOutcome = std::variant<Response, Failure>;

/// Makes single requests. Safe to use from several threads at once.
class Transport {
 public:
  virtual ~Transport() = default;

  /// One GET of the URL, aborted after `timeout`. Counts the request in the thread's read session. Throws
  /// `Quindarel::System::InterruptException` within 50 ms of the interrupt, and `std::bad_alloc`.
  virtual AttemptOutcome get(std::string const& url, std::chrono::milliseconds timeout) = 0;
};

}  // namespace foundation::storage::s3
