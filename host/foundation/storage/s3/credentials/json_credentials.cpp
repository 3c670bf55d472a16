#include "foundation/storage/s3/credentials/json_credentials.hpp"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "foundation/core/text/ascii.hpp"
#include "foundation/storage/s3/credentials/timestamp.hpp"

namespace foundation::storage::s3 {
namespace {

using Json = nlohmann::json;

Json parseObject(std::string const& text) {
  Json json = Json::parse(text, nullptr, false);  // its exceptions would quote the text
  if (!json.is_object()) throw CredentialsError("the credentials aren't a JSON object");
  return json;
}

// Empty if it is absent or null.
std::string text(Json const& object, char const* name) {
  auto const found = object.find(name);
  if (found == object.end() || found->is_null()) return {};
  if (!found->is_string()) throw CredentialsError(std::string("\"") + name + "\" isn't a JSON string");
  return found->get<std::string>();
}

std::string requiredText(Json const& object, char const* name) {
  std::string value = text(object, name);
  if (value.empty()) throw CredentialsError(std::string("\"") + name + "\" is missing");
  return value;
}

std::chrono::sys_seconds timestamp(std::string const& value, char const* name) {
  auto const time = parseTimestamp(value);
  if (!time) throw CredentialsError(std::string("\"") + name + "\" isn't a time in ISO 8601 form");
  return *time;
}

Credentials credentialsIn(Json const& object, char const* tokenName) {
  Credentials credentials{requiredText(object, "AccessKeyId"), requiredText(object, "SecretAccessKey"),
                          text(object, tokenName)};
  if (std::string const expiration = text(object, "Expiration"); !expiration.empty())
    credentials.expiration = timestamp(expiration, "Expiration");
  return credentials;
}

}  // namespace

Credentials parseProcessOutput(std::string const& json) {
  Json const object = parseObject(json);
  auto const version = object.find("Version");
  if (version == object.end() || *version != 1) throw CredentialsError("\"Version\" isn't 1");
  return credentialsIn(object, "SessionToken");
}

Credentials parseServiceCredentials(std::string const& json) {
  Json const object = parseObject(json);
  if (std::string const code = text(object, "Code"); !code.empty() && code != "Success") {
    bool const isName = std::all_of(code.begin(), code.end(), [](char c) { return core::text::isLetter(c); });
    throw CredentialsError("the service refused them" + (isName ? " (" + code + ')' : std::string()));
  }
  return credentialsIn(object, "Token");
}

Credentials parseRoleCredentials(std::string const& json) {
  Json const object = parseObject(json);
  auto const role = object.find("roleCredentials");
  if (role == object.end() || !role->is_object()) throw CredentialsError("\"roleCredentials\" is missing");
  Credentials credentials{requiredText(*role, "accessKeyId"), requiredText(*role, "secretAccessKey"),
                          requiredText(*role, "sessionToken")};
  auto const expiration = role->find("expiration");
  if (expiration == role->end() || !expiration->is_number_unsigned())
    throw CredentialsError("\"expiration\" isn't a number of milliseconds");
  credentials.expiration = std::chrono::sys_seconds(std::chrono::seconds(expiration->get<std::uint64_t>() / 1000));
  return credentials;
}

CachedToken parseCachedToken(std::string const& json) {
  Json const object = parseObject(json);
  return {requiredText(object, "accessToken"), timestamp(requiredText(object, "expiresAt"), "expiresAt")};
}

}  // namespace foundation::storage::s3
