#pragma once

#include <string>
#include <vector>

namespace foundation::storage::s3 {

/// Replaces every occurrence of a secret in a text by "***": as it is, with any of its bytes percent-encoded, and in
/// Base64.
void redact(std::string& text, std::vector<std::string> const& secrets);

/// What must not be shown of the URL of a proxy that contains a user name and a password: both together and the
/// password, as written and percent-decoded. Nothing if the URL contains neither. The URL need not be valid.
std::vector<std::string> userInformation(std::string const& proxy);

}  // namespace foundation::storage::s3
