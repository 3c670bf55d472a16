#pragma once

#include <string>

#include "foundation/storage/s3/credentials/credentials_source.hpp"

namespace foundation::storage::s3 {

/// A command that prints credentials: a profile's `credential_process`. Each fetch runs it once.
class ProcessSource final : public CredentialsSource {
 public:
  ProcessSource(std::string const& profile, std::string command);

  std::string name() const override { return name_; }
  std::optional<Credentials> fetch() override;

 private:
  std::string name_;
  std::string command_;  // in no message, as it may contain a secret
};

}  // namespace foundation::storage::s3
