#include "foundation/storage/s3/credentials/sso_source.hpp"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include "foundation/storage/s3/credentials/json_credentials.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr std::chrono::minutes renewalWindow(5);

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

// Replaces the file as a whole, so that no other program reads half of it. Failures don't matter to this process.
void replaceFile(std::string const& path, std::string const& text) {
  std::string temporary = path + ".XXXXXX";
  int const file = mkostemp(temporary.data(), O_CLOEXEC);  // readable for the user only
  if (file < 0) return;
  bool const written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  if (close(file) != 0 || !written || std::rename(temporary.c_str(), path.c_str()) != 0) unlink(temporary.c_str());
}

}  // namespace

SsoSource::SsoSource(Settings settings, FileReader files)
    : settings_(std::move(settings)),
      files_(std::move(files)),
      path_(settings_.home + "/.aws/sso/cache/" + sha1Hex(settings_.session) + ".json") {}

std::optional<Credentials> SsoSource::fetch() {
  std::string const token = accessToken();
  HttpRequest const request{.url = settings_.portalUrl + "/federation/credentials?" +
                                   canonicalQuery({{"account_id", settings_.account}, {"role_name", settings_.role}}),
                            .headers = {"x-amz-sso_bearer_token: " + token}};
  return parseRoleCredentials(successBody(callService(request, settings_.access), settings_.access, {token}));
}

std::string SsoSource::accessToken() {
  auto file = files_(path_);
  if (!file) throw CredentialsError("there is no token of a login: log in first");
  if (*file == old_) file = new_;
  SsoToken const token = parseSsoToken(*file);
  // Rounded, as the system clock's own unit can't express the years after 2262.
  auto const now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  bool const valid = now < token.expiration;
  if (token.isRenewable() && token.expiration - now < renewalWindow) {
    try {
      new_ = renewed(*file, token);
      old_ = *std::move(file);
      replaceFile(path_, new_);
      return parseSsoToken(new_).accessToken;
    } catch (CredentialsError const& error) {
      if (!valid)
        throw CredentialsError(std::string("the token of the login has expired, and can't be renewed: ") +
                               error.what());
    }
  }
  if (!valid) throw CredentialsError("the token of the login has expired: log in again");
  return token.accessToken;
}

std::string SsoSource::renewed(std::string const& file, SsoToken const& token) const {
  HttpRequest const request{.method = "POST",
                            .url = settings_.tokenUrl + "/token",
                            .headers = {"Content-Type: application/json"},
                            .body = renewalBody(token)};
  Secrets const secrets{token.accessToken, token.refreshToken, token.clientSecret};
  RequestOutcome const outcome = callService(request, settings_.access);
  return renewedFile(file, successBody(outcome, settings_.access, secrets),
                     std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
}

}  // namespace foundation::storage::s3
