#include "foundation/storage/s3/credentials/web_identity_source.hpp"

#include <utility>

#include "foundation/storage/s3/credentials/token_file.hpp"

namespace foundation::storage::s3 {

WebIdentitySource::WebIdentitySource(Role role, std::string tokenFile, TokenService service, FileReader files)
    : role_(std::move(role)),
      tokenFile_(std::move(tokenFile)),
      service_(std::move(service)),
      files_(std::move(files)) {}

std::optional<Credentials> WebIdentitySource::fetch() {
  std::string const token = readToken(files_, tokenFile_);
  return callTokenService(service_, role_, "AssumeRoleWithWebIdentity", {{"WebIdentityToken", token}}, nullptr,
                          {token});
}

}  // namespace foundation::storage::s3
