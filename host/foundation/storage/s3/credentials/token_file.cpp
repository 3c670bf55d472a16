#include "foundation/storage/s3/credentials/token_file.hpp"

#include "foundation/storage/s3/credentials/credentials.hpp"

namespace foundation::storage::s3 {

std::string readToken(FileReader const& files, std::string const& path) {
  auto text = files(path);
  if (!text) throw CredentialsError("the token file " + path + " doesn't exist");
  text->erase(text->find_last_not_of("\r\n") + 1);
  if (text->empty()) throw CredentialsError("the token file " + path + " is empty");
  return *std::move(text);
}

}  // namespace foundation::storage::s3
