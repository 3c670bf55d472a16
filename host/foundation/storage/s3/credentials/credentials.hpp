#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "foundation/storage/s3/configuration_error.hpp"

namespace foundation::storage::s3 {

/// What requests are signed with.
struct Credentials {
  std::string accessKey = {};
  std::string secret = {};
  std::string sessionToken = {};                            ///< empty if there is none
  std::optional<std::chrono::sys_seconds> expiration = {};  ///< absent for credentials that don't expire
};

/// Credentials that can't be had, or can't be used. The message contains no secret.
class CredentialsError : public ConfigurationError {
 public:
  using ConfigurationError::ConfigurationError;
};

/// Throws `CredentialsError` if the text has a control character: in a header of a request, a line break would begin
/// another header. The message has the name and not the text.
void requireNoControl(std::string const& text, char const* name);

/// Throws `CredentialsError` unless both keys are there and nothing has a control character.
void requireUsable(Credentials const& credentials);

}  // namespace foundation::storage::s3
