#include "foundation/storage/s3/credentials/credentials.hpp"

#include <algorithm>

namespace foundation::storage::s3 {

void requireNoControl(std::string const& text, char const* name) {
  auto const isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  if (std::any_of(text.begin(), text.end(), isControl))
    throw CredentialsError(std::string(name) + " contains a control character, such as a line break");
}

void requireUsable(Credentials const& credentials) {
  if (credentials.accessKey.empty()) throw CredentialsError("the access key is empty");
  if (credentials.secret.empty()) throw CredentialsError("the secret key is empty");
  requireNoControl(credentials.accessKey, "the access key");
  requireNoControl(credentials.secret, "the secret key");
  requireNoControl(credentials.sessionToken, "the session token");
}

}  // namespace foundation::storage::s3
