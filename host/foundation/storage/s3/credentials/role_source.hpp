#pragma once

#include <memory>
#include <string>

#include "foundation/storage/s3/credentials/credentials_cache.hpp"
#include "foundation/storage/s3/credentials/token_service.hpp"

namespace foundation::storage::s3 {

/// A role that other credentials may assume: a profile's `role_arn` with `source_profile` or `credential_source`. Each
/// fetch is one signed request to the token service, and what the other credentials take.
class RoleSource final : public CredentialsSource {
 public:
  struct Settings {
    Role role = {};
    std::string externalId = {};       ///< empty for none
    std::string durationSeconds = {};  ///< empty for the service's default
  };

  RoleSource(Settings settings, TokenService service, std::unique_ptr<CredentialsSource> base);

  std::string name() const override { return "the role " + settings_.role.arn; }
  std::optional<Credentials> fetch() override;

 private:
  Settings settings_;
  TokenService service_;
  std::string baseName_;
  CredentialsCache base_;
};

}  // namespace foundation::storage::s3
