#include "foundation/storage/s3/credentials/json_credentials.hpp"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "foundation/core/text/ascii.hpp"
#include "foundation/storage/s3/credentials/json_object.hpp"

namespace foundation::storage::s3 {
namespace {

Credentials credentialsIn(nlohmann::json const& object, char const* tokenName) {
  return {requiredTextIn(object, "AccessKeyId"), requiredTextIn(object, "SecretAccessKey"), textIn(object, tokenName),
          timeIn(object, "Expiration")};
}

}  // namespace

Credentials parseProcessOutput(std::string const& json) {
  nlohmann::json const object = parseObject(json);
  auto const version = object.find("Version");
  if (version == object.end() || *version != 1) throw CredentialsError("\"Version\" isn't 1");
  return credentialsIn(object, "SessionToken");
}

Credentials parseServiceCredentials(std::string const& json) {
  nlohmann::json const object = parseObject(json);
  if (std::string const code = textIn(object, "Code"); !code.empty() && code != "Success") {
    bool const isName = std::all_of(code.begin(), code.end(), core::text::isLetter<char>);
    throw CredentialsError("the service refused them" + (isName ? " (" + code + ')' : std::string()));
  }
  return credentialsIn(object, "Token");
}

Credentials parseRoleCredentials(std::string const& json) {
  nlohmann::json const object = parseObject(json);
  auto const role = object.find("roleCredentials");
  if (role == object.end() || !role->is_object()) throw CredentialsError("\"roleCredentials\" is missing");
  std::chrono::milliseconds const expiration(numberIn(*role, "expiration"));
  return {requiredTextIn(*role, "accessKeyId"), requiredTextIn(*role, "secretAccessKey"),
          requiredTextIn(*role, "sessionToken"),
          std::chrono::sys_seconds(std::chrono::floor<std::chrono::seconds>(expiration))};
}

}  // namespace foundation::storage::s3
