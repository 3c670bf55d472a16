#pragma once

#include <string>

#include "foundation/storage/s3/profiles.hpp"

namespace foundation::storage::s3 {

/// The token in a file, without the line break at its end. Throws `CredentialsError` if the file doesn't exist or is
/// empty.
std::string readToken(FileReader const& files, std::string const& path);

}  // namespace foundation::storage::s3
