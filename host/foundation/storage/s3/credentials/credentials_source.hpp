#pragma once

#include <optional>
#include <string>

#include "foundation/storage/s3/credentials/credentials.hpp"

namespace foundation::storage::s3 {

/// One of the places that credentials come from. Used by one thread at a time.
class CredentialsSource {
 public:
  virtual ~CredentialsSource() = default;

  /// The source in a message, after "credentials from". Contains no secret.
  virtual std::string name() const = 0;

  /// New credentials, or nothing if it turns out that the source doesn't exist on this machine. Throws
  /// `CredentialsError` with the reason, and `Quindarel::System::InterruptException`.
  virtual std::optional<Credentials> fetch() = 0;
};

}  // namespace foundation::storage::s3
