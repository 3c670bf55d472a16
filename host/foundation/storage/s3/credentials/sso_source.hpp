#pragma once

#include <string>

#include "foundation/storage/s3/credentials/credentials_source.hpp"
#include "foundation/storage/s3/credentials/service_call.hpp"
#include "foundation/storage/s3/credentials/sso_token.hpp"
#include "foundation/storage/s3/profiles.hpp"

namespace foundation::storage::s3 {

/// A role of an account that an earlier SSO login gives access to. The login has left its token in a file; each fetch
/// reads it again, as another login may have replaced it, and makes one request to the SSO portal. A token that is
/// about to expire is renewed by one more request, if the login has left the means, and written back to the file.
class SsoSource final : public CredentialsSource {
 public:
  struct Settings {
    std::string profile = {};
    std::string session = {};  ///< the name of the sso-session section, or else the start URL: names the token's file
    std::string account = {};
    std::string role = {};
    std::string portalUrl = {};  ///< without a final "/", as the next one
    std::string tokenUrl = {};   ///< where tokens are renewed
    std::string home = {};       ///< the folder with ".aws/sso/cache"
    ServiceAccess access = {};
  };

  SsoSource(Settings settings, FileReader files);

  std::string name() const override { return "the SSO login of the profile \"" + settings_.profile + '"'; }
  std::optional<Credentials> fetch() override;

 private:
  std::string accessToken();
  std::string renewed(std::string const& file, SsoToken const& token) const;

  Settings settings_;
  FileReader files_;
  std::string path_;  // of the token's file
  // The file that was renewed last, and what it became: it may be impossible to write it back.
  std::string old_;
  std::string new_;
};

}  // namespace foundation::storage::s3
