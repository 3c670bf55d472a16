#pragma once

#include <string>

#include "foundation/storage/s3/credentials/credentials_source.hpp"
#include "foundation/storage/s3/credentials/service_call.hpp"
#include "foundation/storage/s3/profiles.hpp"

namespace foundation::storage::s3 {

/// The service that gives a container its credentials. Each fetch is one request.
class ContainerSource final : public CredentialsSource {
 public:
  /// AWS_CONTAINER_CREDENTIALS_RELATIVE_URI, a path on the link-local host of the service, or else
  /// AWS_CONTAINER_CREDENTIALS_FULL_URI; with the token in the file AWS_CONTAINER_AUTHORIZATION_TOKEN_FILE, which each
  /// fetch reads again, or else AWS_CONTAINER_AUTHORIZATION_TOKEN. Throws `ConfigurationError` for a URI over plain
  /// HTTP to any host but a loopback or link-local one.
  ContainerSource(Environment const& environment, FileReader files, ServiceAccess access);

  /// Whether one of the two URIs is set.
  static bool isConfigured(Environment const& environment);

  std::string name() const override { return "the container's credentials service"; }
  std::optional<Credentials> fetch() override;

 private:
  std::string url_;
  std::string tokenFile_;
  std::string token_;
  FileReader files_;
  ServiceAccess access_;
};

}  // namespace foundation::storage::s3
