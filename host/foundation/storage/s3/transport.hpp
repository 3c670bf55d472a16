#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>

namespace foundation::storage::s3 {

/// What a store answered, of whatever status.
struct Answer {
  long status = 0;  ///< of HTTP
  std::string body;
  std::string requestId;                           ///< as the headers name it, or empty
  std::string region;                              ///< the bucket's, as the headers name it, or empty
  std::optional<std::chrono::seconds> retryAfter;  ///< how long the store asks to wait
};

/// Why there is no answer, or none that is whole.
struct Failure {
  enum class Kind {
    unreachable,  ///< no connection came about
    lost,         ///< the connection broke, or time ran out
    lasting,      ///< it would fail again: no trusted certificate, no HTTP, an answer past all bounds
  };
  Kind kind = Kind::lasting;
  std::string reason;
};

using Outcome = std::variant<Answer, Failure>;

/// Makes single requests. Usable from several threads at once.
class Transport {
 public:
  virtual ~Transport() = default;

  /// One GET of the URL, cut off at `limit`. Counts itself in the thread's session. Throws only
  /// `Quindarel::System::InterruptException`, within a twentieth of a second of the interrupt.
  virtual Outcome get(std::string const& url, std::chrono::milliseconds limit) = 0;
};

}  // namespace foundation::storage::s3
