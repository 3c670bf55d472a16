#pragma once

#include <memory>
#include <string>

#include "foundation/storage/s3/credentials/credentials_cache.hpp"
#include "foundation/storage/s3/credentials/service_call.hpp"
#include "foundation/storage/s3/profiles.hpp"

namespace foundation::storage::s3 {

/// What the choice is made from.
struct CredentialsContext {
  Environment const& environment;
  FileReader const& files;
  Profiles const& profiles;
  bool profileIsExplicit;  ///< the host has set the profile: keys and web identity in the environment don't count
  std::string region;
  ServiceAccess access;
};

/// The credentials of the first of these sources that is configured; null if none is:
///
/// 1. keys in the environment: AWS_ACCESS_KEY_ID with AWS_SECRET_ACCESS_KEY and AWS_SESSION_TOKEN
/// 2. the profile's `role_arn` with `source_profile` or `credential_source`
/// 3. web identity: AWS_WEB_IDENTITY_TOKEN_FILE with AWS_ROLE_ARN; the profile's `web_identity_token_file` with
///    `role_arn`
/// 4. an SSO login: the profile's `sso_session`, or `sso_start_url` with `sso_region`
/// 5. the profile's keys in the credentials file
/// 6. the profile's `credential_process`
/// 7. the profile's keys in the config file
/// 8. the container's credentials service: AWS_CONTAINER_CREDENTIALS_RELATIVE_URI or AWS_CONTAINER_CREDENTIALS_FULL_URI
/// 9. the instance's metadata service, unless AWS_EC2_METADATA_DISABLED is "true"
///
/// The choice is final: if the source then fails, that is an error, and no other identity is used instead. Throws
/// `ConfigurationError` for settings that are incomplete or contradict each other, or that name an unsupported source.
/// Makes no request.
std::shared_ptr<CredentialsCache> chooseCredentials(CredentialsContext const& context, Profile const& profile);

}  // namespace foundation::storage::s3
