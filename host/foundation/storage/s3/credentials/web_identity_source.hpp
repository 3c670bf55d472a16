#pragma once

#include <string>

#include "foundation/storage/s3/credentials/credentials_source.hpp"
#include "foundation/storage/s3/credentials/token_service.hpp"
#include "foundation/storage/s3/profiles.hpp"

namespace foundation::storage::s3 {

/// A role that the token in a file may assume: AWS_WEB_IDENTITY_TOKEN_FILE, or a profile's `web_identity_token_file`.
/// Each fetch reads the file again, as the token is replaced before it expires, and makes one unsigned request.
class WebIdentitySource final : public CredentialsSource {
 public:
  WebIdentitySource(Role role, std::string tokenFile, TokenService service, FileReader files);

  std::string name() const override { return "the role " + role_.arn + " by web identity"; }
  std::optional<Credentials> fetch() override;

 private:
  Role role_;
  std::string tokenFile_;
  TokenService service_;
  FileReader files_;
};

}  // namespace foundation::storage::s3
