#pragma once

#include <string>

#include "foundation/storage/s3/credentials/credentials_source.hpp"
#include "foundation/storage/s3/profiles.hpp"

namespace foundation::storage::s3 {

/// Keys that are written down: in environment variables or in a profile.
class StaticSource final : public CredentialsSource {
 public:
  StaticSource(std::string name, Credentials credentials);

  std::string name() const override { return name_; }
  std::optional<Credentials> fetch() override { return credentials_; }

 private:
  std::string name_;
  Credentials credentials_;
};

/// AWS_ACCESS_KEY_ID with AWS_SECRET_ACCESS_KEY and AWS_SESSION_TOKEN; nothing if neither key is set. Throws
/// `ConfigurationError` for one key without the other.
std::optional<Credentials> environmentKeys(Environment const& environment);

/// The keys in one file's section of a profile, which may be null; nothing if it has neither. Throws
/// `ConfigurationError` for one key without the other.
std::optional<Credentials> profileKeys(Profile const& profile, ProfileSection const* section);

}  // namespace foundation::storage::s3
