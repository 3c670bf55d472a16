#pragma once

#include <chrono>
#include <string>

namespace foundation::storage::s3 {

/// The token that an SSO login has left in its cache file.
struct SsoToken {
  std::string accessToken = {};
  std::chrono::sys_seconds expiration = {};
  std::string refreshToken = {};  ///< with the client's identity, gets another token; all three empty if there is none
  std::string clientId = {};
  std::string clientSecret = {};

  bool isRenewable() const { return !refreshToken.empty() && !clientId.empty() && !clientSecret.empty(); }
};

/// The text of such a file: a JSON object with "accessToken", "expiresAt" and perhaps "refreshToken", "clientId" and
/// "clientSecret". As below, a malformed text throws `CredentialsError`, whose message quotes none of it.
SsoToken parseSsoToken(std::string const& file);

/// The body of the request for another token, in JSON.
std::string renewalBody(SsoToken const& token);

/// The file with the token of the response to that request, which is valid from `now` for the time that it says.
std::string renewedFile(std::string const& file, std::string const& response, std::chrono::sys_seconds now);

}  // namespace foundation::storage::s3
