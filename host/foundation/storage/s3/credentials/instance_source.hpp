#pragma once

#include <string>

#include "foundation/storage/s3/credentials/credentials_source.hpp"
#include "foundation/storage/s3/credentials/service_call.hpp"
#include "foundation/storage/s3/profiles.hpp"

namespace foundation::storage::s3 {

/// The role of the virtual machine, from its metadata service, version 2 only. Each fetch is three requests that may
/// take one second each. Gives nothing where there is no such service, or no role.
class InstanceSource final : public CredentialsSource {
 public:
  /// Asks AWS_EC2_METADATA_SERVICE_ENDPOINT, by default the service's link-local address, for version 6 of the Internet
  /// Protocol if AWS_EC2_METADATA_SERVICE_ENDPOINT_MODE is "IPv6". Throws `ConfigurationError` for an invalid endpoint.
  explicit InstanceSource(Environment const& environment);

  /// Whether AWS_EC2_METADATA_DISABLED isn't "true".
  static bool isEnabled(Environment const& environment);

  std::string name() const override { return "the instance's metadata service"; }
  std::optional<Credentials> fetch() override;

 private:
  RequestOutcome ask(std::string const& path, std::string const& method, std::string header) const;

  std::string endpoint_;
};

}  // namespace foundation::storage::s3
