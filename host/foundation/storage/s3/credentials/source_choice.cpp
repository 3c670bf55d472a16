#include "foundation/storage/s3/credentials/source_choice.hpp"

#include "foundation/storage/s3/credentials/static_source.hpp"

namespace foundation::storage::s3 {
namespace {

using Source = std::unique_ptr<CredentialsSource>;

Source profileSource(Profile const& profile) {
  for (ProfileSection const* each : {profile.inCredentialsFile(), profile.inConfigFile()})
    if (auto keys = profileKeys(profile, each))
      return std::make_unique<StaticSource>("the profile \"" + profile.name() + '"', *std::move(keys));
  return nullptr;
}

}  // namespace

std::shared_ptr<CredentialsCache> chooseCredentials(CredentialsContext const& context, Profile const& profile) {
  Source source;
  if (auto keys = environmentKeys(context.environment))
    source = std::make_unique<StaticSource>("the environment", *std::move(keys));
  else
    source = profileSource(profile);
  return source ? std::make_shared<CredentialsCache>(std::move(source)) : nullptr;
}

}  // namespace foundation::storage::s3
