#include "foundation/storage/s3/credentials/sso_token.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "foundation/storage/s3/credentials/credentials.hpp"
#include "foundation/storage/s3/credentials/json_object.hpp"

namespace foundation::storage::s3 {
namespace {

// "2030-01-31T23:59:59Z"
std::string writtenTimestamp(std::chrono::sys_seconds time) {
  auto const day = std::chrono::floor<std::chrono::days>(time);
  std::chrono::year_month_day const date(day);
  std::chrono::hh_mm_ss const clock(time - day);
  std::array<char, 64> text{};
  (void)std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                      static_cast<int>(clock.seconds().count()));
  return text.data();
}

}  // namespace

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
