#include "foundation/storage/s3/credentials/credentials.hpp"

#include <algorithm>
#include <utility>

namespace foundation::storage::s3 {

void requireUsable(Credentials const& credentials) {
  auto const isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  if (credentials.accessKey.empty()) throw CredentialsError("the access key is empty");
  if (credentials.secret.empty()) throw CredentialsError("the secret key is empty");
  for (auto const& [text, name] : {std::pair(&credentials.accessKey, "access key"),
                                   {&credentials.secret, "secret key"},
                                   {&credentials.sessionToken, "session token"}})
    if (std::any_of(text->begin(), text->end(), isControl))
      throw CredentialsError(std::string("the ") + name + " contains a control character, such as a line break");
}

}  // namespace foundation::storage::s3
