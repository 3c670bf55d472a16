#pragma once

#include <stdexcept>

namespace foundation::storage::s3 {

/// A configuration that can't be used. The message contains no secret.
class ConfigurationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace foundation::storage::s3
