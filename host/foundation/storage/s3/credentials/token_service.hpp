#pragma once

#include <string>

#include "foundation/storage/s3/credentials/credentials.hpp"
#include "foundation/storage/s3/credentials/service_call.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {

/// The service that issues temporary credentials for a role.
struct TokenService {
  std::string url = {};
  std::string region = {};  ///< for signatures
  ServiceAccess access = {};
};

/// The role that a profile or the environment names.
struct Role {
  std::string arn = {};
  std::string sessionName = {};  ///< empty for a default
};

/// Calls an action of the service, signed with the credentials unless these are null, and gives the credentials of its
/// response. The parameters are those of the action; the role's are added. The secrets, and those of the credentials,
/// are blotted out of messages. Throws `CredentialsError`, and `Quindarel::System::InterruptException`.
Credentials callTokenService(TokenService const& service, Role const& role, std::string const& action, Query parameters,
                             Credentials const* credentials, Secrets secrets);

}  // namespace foundation::storage::s3
