#pragma once

#include <string>

#include "foundation/storage/s3/credentials/credentials.hpp"

namespace foundation::storage::s3 {

/// The output of a credential_process: an object with "Version" 1, "AccessKeyId", "SecretAccessKey" and perhaps
/// "SessionToken" and "Expiration". As with the other functions here, a malformed text throws `CredentialsError`, whose
/// message quotes none of it.
Credentials parseProcessOutput(std::string const& json);

/// The response of a container's credentials service or of the instance's metadata service: an object with
/// "AccessKeyId", "SecretAccessKey", "Token" and "Expiration", or with a "Code" other than "Success".
Credentials parseServiceCredentials(std::string const& json);

/// The response of the SSO portal: "roleCredentials" with "accessKeyId", "secretAccessKey", "sessionToken" and
/// "expiration" in milliseconds since 1970.
Credentials parseRoleCredentials(std::string const& json);

}  // namespace foundation::storage::s3
