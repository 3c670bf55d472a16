#include "foundation/storage/s3/credentials/role_source.hpp"

#include <utility>

namespace foundation::storage::s3 {

RoleSource::RoleSource(Settings settings, TokenService service, std::unique_ptr<CredentialsSource> base)
    : settings_(std::move(settings)), service_(std::move(service)), baseName_(base->name()), base_(std::move(base)) {}

std::optional<Credentials> RoleSource::fetch() {
  auto const base = base_.current();
  if (!base) throw CredentialsError("no credentials from " + baseName_);
  Query parameters;
  if (!settings_.externalId.empty()) parameters.emplace_back("ExternalId", settings_.externalId);
  if (!settings_.durationSeconds.empty()) parameters.emplace_back("DurationSeconds", settings_.durationSeconds);
  return callTokenService(service_, settings_.role, "AssumeRole", std::move(parameters), base.get(), {});
}

}  // namespace foundation::storage::s3
