#include "foundation/storage/s3/credentials/sso_token.hpp"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "foundation/storage/s3/credentials/credentials.hpp"
#include "foundation/storage/s3/credentials/json_object.hpp"
#include "foundation/storage/s3/credentials/timestamp.hpp"

namespace foundation::storage::s3 {

SsoToken parseSsoToken(std::string const& file) {
  nlohmann::json const object = parseObject(file);
  auto const expiration = timeIn(object, "expiresAt");
  if (!expiration) throw CredentialsError("\"expiresAt\" is missing");
  SsoToken token{requiredTextIn(object, "accessToken"), *expiration, textIn(object, "refreshToken"),
                 textIn(object, "clientId"), textIn(object, "clientSecret")};
  requireNoControl(token.accessToken, "the token of the login");
  return token;
}

std::string renewalBody(SsoToken const& token) {
  nlohmann::json const body{{"grantType", "refresh_token"},
                            {"clientId", token.clientId},
                            {"clientSecret", token.clientSecret},
                            {"refreshToken", token.refreshToken}};
  return body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string renewedFile(std::string const& file, std::string const& response, std::chrono::sys_seconds now) {
  nlohmann::json const renewed = parseObject(response);
  nlohmann::json object = parseObject(file);
  constexpr std::uint64_t longest = 365UL * 24 * 3600;
  object["accessToken"] = requiredTextIn(renewed, "accessToken");
  object["expiresAt"] = writtenTimestamp(now + std::chrono::seconds(std::min(numberIn(renewed, "expiresIn"), longest)));
  if (std::string const next = textIn(renewed, "refreshToken"); !next.empty()) object["refreshToken"] = next;
  return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace foundation::storage::s3
