#include "foundation/storage/s3/credentials/sso_source.hpp"

#include <array>
#include <new>
#include <utility>

#include <openssl/evp.h>

#include "foundation/storage/s3/credentials/json_credentials.hpp"
#include "foundation/storage/s3/credentials/service_call.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

std::string sha1Hex(std::string const& text) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned size = 0;
  if (EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_sha1(), nullptr) != 1)
    throw CredentialsError("SHA-1, which names the file with the token, isn't available");
  std::string hex;
  for (unsigned i = 0; i < size; ++i) {
    constexpr char digits[] = "0123456789abcdef";
    hex += digits[digest[i] >> 4];
    hex += digits[digest[i] & 15];
  }
  return hex;
}

}  // namespace

SsoSource::SsoSource(Settings settings, FileReader files) : settings_(std::move(settings)), files_(std::move(files)) {}

std::optional<Credentials> SsoSource::fetch() {
  auto const cached = files_(settings_.home + "/.aws/sso/cache/" + sha1Hex(settings_.session) + ".json");
  if (!cached) throw CredentialsError("there is no token of a login: log in first");
  CachedToken const token = parseCachedToken(*cached);
  // Rounded, as the system clock's own unit can't express the years after 2262.
  if (token.expiration <= std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()))
    throw CredentialsError("the token of the login has expired: log in again");
  requireNoControl(token.accessToken, "the token of the login");
  HttpRequest const request{.url = settings_.portalUrl + "/federation/credentials?" +
                                   canonicalQuery({{"account_id", settings_.account}, {"role_name", settings_.role}}),
                            .headers = {"x-amz-sso_bearer_token: " + token.accessToken}};
  return parseRoleCredentials(successBody(callService(request, settings_.caBundle), {token.accessToken}));
}

}  // namespace foundation::storage::s3
