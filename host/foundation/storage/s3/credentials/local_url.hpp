#pragma once

#include <string>

namespace foundation::storage::s3 {

/// Where a URL leads to, as far as it matters for sending it a secret.
enum class UrlSafety {
  malformed,  ///< not a URL of HTTP, or with a user or a password
  exposed,    ///< plain HTTP to another machine, which any network in between can read
  safe,       ///< HTTPS, or a loopback or link-local host
};

/// Judges by the host as libcurl reads it; makes no look-up, so of host names only "localhost" is local.
UrlSafety safetyOf(std::string const& url);

}  // namespace foundation::storage::s3
