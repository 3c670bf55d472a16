#include "foundation/storage/s3/credentials/json_object.hpp"

#include <nlohmann/json.hpp>

#include "foundation/storage/s3/credentials/credentials.hpp"
#include "foundation/storage/s3/timestamp.hpp"

namespace foundation::storage::s3 {
namespace {

[[noreturn]] void fail(char const* name, char const* fault) {
  throw CredentialsError('"' + std::string(name) + "\" " + fault);
}

}  // namespace

nlohmann::json parseObject(std::string const& text) {
  nlohmann::json json = nlohmann::json::parse(text, nullptr, false);  // its exceptions would quote the text
  if (!json.is_object()) throw CredentialsError("the credentials aren't a JSON object");
  return json;
}

std::string textIn(nlohmann::json const& object, char const* name) {
  auto const found = object.find(name);
  if (found == object.end() || found->is_null()) return {};
  if (!found->is_string()) fail(name, "isn't a JSON string");
  return found->get<std::string>();
}

std::string requiredTextIn(nlohmann::json const& object, char const* name) {
  std::string value = textIn(object, name);
  if (value.empty()) fail(name, "is missing");
  return value;
}

std::optional<std::chrono::sys_seconds> timeIn(nlohmann::json const& object, char const* name) {
  std::string const value = textIn(object, name);
  if (value.empty()) return std::nullopt;
  auto const time = parseTimestamp(value);
  if (!time) fail(name, "isn't a time in ISO 8601 form");
  return std::chrono::floor<std::chrono::seconds>(*time);
}

std::uint64_t numberIn(nlohmann::json const& object, char const* name) {
  auto const found = object.find(name);
  if (found == object.end() || !found->is_number_unsigned()) fail(name, "isn't a whole number");
  return found->get<std::uint64_t>();
}

}  // namespace foundation::storage::s3
