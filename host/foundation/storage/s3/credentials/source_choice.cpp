#include "foundation/storage/s3/credentials/source_choice.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "foundation/core/text/ascii.hpp"
#include "foundation/storage/s3/credentials/container_source.hpp"
#include "foundation/storage/s3/credentials/instance_source.hpp"
#include "foundation/storage/s3/credentials/process_source.hpp"
#include "foundation/storage/s3/credentials/role_source.hpp"
#include "foundation/storage/s3/credentials/sso_source.hpp"
#include "foundation/storage/s3/credentials/static_source.hpp"
#include "foundation/storage/s3/credentials/web_identity_source.hpp"
#include "foundation/storage/s3/service_endpoint.hpp"

namespace foundation::storage::s3 {
namespace {

using Source = std::unique_ptr<CredentialsSource>;

std::string quotedName(Profile const& profile) {
  return "the profile \"" + profile.name() + '"';
}

// A setting that the profile must have, as it has another one.
std::string required(Profile const& profile, char const* name, char const* because) {
  std::string value = profile.setting(name);
  if (value.empty()) throw ConfigurationError(quotedName(profile) + " sets " + because + ", but not " + name);
  return value;
}

bool hasKeys(Profile const& profile) {
  return !profile.setting("aws_access_key_id").empty() && !profile.setting("aws_secret_access_key").empty();
}

bool assumesRole(Profile const& profile) {
  return !profile.setting("role_arn").empty() && profile.setting("web_identity_token_file").empty();
}

/// Chooses for one configuration. Each function makes the source that it is named after, or null if that isn't
/// configured.
class Choice {
 public:
  Choice(CredentialsContext const& context, Profile const& active) : context_(context), active_(active) {}

  Source choose() const {
    if (Source source = context_.profileIsExplicit ? nullptr : environment()) return source;
    if (assumesRole(active_)) return role(active_, {});
    if (Source source = context_.profileIsExplicit ? nullptr : environmentWebIdentity()) return source;
    if (Source source = profileSource(active_)) return source;
    if (!active_.setting("login_session").empty())
      throw ConfigurationError(quotedName(active_) + " sets login_session, which isn't supported");
    if (Source source = container()) return source;
    return instance();
  }

 private:
  Source environment() const {
    auto keys = environmentKeys(context_.environment);
    return keys ? std::make_unique<StaticSource>("the environment", *std::move(keys)) : nullptr;
  }

  Source container() const {
    if (!ContainerSource::isConfigured(context_.environment)) return nullptr;
    return std::make_unique<ContainerSource>(context_.environment, context_.files, context_.access);
  }

  Source instance() const {
    if (!InstanceSource::isEnabled(context_.environment)) return nullptr;
    return std::make_unique<InstanceSource>(context_.environment);
  }

  // `above` are the names of the profiles whose source this one is.
  Source role(Profile const& profile, std::vector<std::string> above) const {
    if (!profile.setting("mfa_serial").empty())
      throw ConfigurationError(quotedName(profile) + " sets mfa_serial: roles that need a code aren't supported");
    RoleSource::Settings settings{.role = {profile.setting("role_arn"), profile.setting("role_session_name")},
                                  .externalId = profile.setting("external_id"),
                                  .durationSeconds = profile.setting("duration_seconds")};
    if (!std::all_of(settings.durationSeconds.begin(), settings.durationSeconds.end(), core::text::isDigit<char>))
      throw ConfigurationError("duration_seconds of " + quotedName(profile) + " isn't a whole number");
    std::string const source = profile.setting("source_profile");
    if (source.empty() == profile.setting("credential_source").empty())
      throw ConfigurationError(quotedName(profile) + " sets role_arn, but " +
                               (source.empty() ? "neither source_profile nor credential_source"
                                               : "both source_profile and credential_source"));
    above.push_back(profile.name());
    return std::make_unique<RoleSource>(
        std::move(settings), tokenService(),
        source.empty() ? namedSource(profile) : sourceProfile(source, profile, std::move(above)));
  }

  Source namedSource(Profile const& profile) const {
    std::string const name = profile.setting("credential_source");
    Source source;
    if (name == "Environment")
      source = environment();
    else if (name == "EcsContainer")
      source = container();
    else if (name == "Ec2InstanceMetadata")
      source = instance();
    else
      throw ConfigurationError("credential_source of " + quotedName(profile) + " names \"" + name +
                               "\": use Environment, EcsContainer or Ec2InstanceMetadata");
    if (!source)
      throw ConfigurationError("credential_source of " + quotedName(profile) + " names " + name +
                               ", which gives no credentials here");
    return source;
  }

  Source sourceProfile(std::string const& name, Profile const& user, std::vector<std::string> above) const {
    auto const profile = context_.profiles.find(name);
    if (!profile)
      throw ConfigurationError("source_profile of " + quotedName(user) + " names \"" + name +
                               "\", but neither the credentials file nor the config file has it");
    // A profile may assume its role with keys of its own.
    bool const usesOwnKeys = name == user.name() && hasKeys(*profile);
    if (!usesOwnKeys && std::find(above.begin(), above.end(), name) != above.end())
      throw ConfigurationError("source_profile of " + quotedName(user) + " leads back to the profile \"" + name + '"');
    if (assumesRole(*profile) && !hasKeys(*profile)) return role(*profile, std::move(above));
    Source source = profileSource(*profile);
    if (!source)
      throw ConfigurationError("source_profile of " + quotedName(user) + " names \"" + name +
                               "\", which has no credentials");
    return source;
  }

  /// What the profile itself names, but for a role with a source profile.
  Source profileSource(Profile const& profile) const {
    if (Source source = profileWebIdentity(profile)) return source;
    if (Source source = sso(profile)) return source;
    if (Source source = keys(profile, profile.inCredentialsFile())) return source;
    if (std::string command = profile.setting("credential_process"); !command.empty())
      return std::make_unique<ProcessSource>(profile.name(), std::move(command));
    return keys(profile, profile.inConfigFile());
  }

  static Source keys(Profile const& profile, ProfileSection const* section) {
    auto keys = profileKeys(profile, section);
    return keys ? std::make_unique<StaticSource>(quotedName(profile), *std::move(keys)) : nullptr;
  }

  Source webIdentity(Role role, std::string tokenFile) const {
    return std::make_unique<WebIdentitySource>(std::move(role), std::move(tokenFile), tokenService(), context_.files);
  }

  Source environmentWebIdentity() const {
    std::string file = context_.environment("AWS_WEB_IDENTITY_TOKEN_FILE");
    if (file.empty()) return nullptr;
    Role role{context_.environment("AWS_ROLE_ARN"), context_.environment("AWS_ROLE_SESSION_NAME")};
    if (role.arn.empty()) throw ConfigurationError("AWS_WEB_IDENTITY_TOKEN_FILE is set, but not AWS_ROLE_ARN");
    return webIdentity(std::move(role), std::move(file));
  }

  Source profileWebIdentity(Profile const& profile) const {
    std::string file = profile.setting("web_identity_token_file");
    if (file.empty()) return nullptr;
    return webIdentity({required(profile, "role_arn", "web_identity_token_file"), profile.setting("role_session_name")},
                       std::move(file));
  }

  Source sso(Profile const& profile) const {
    std::string const session = profile.setting("sso_session");
    if (session.empty() && profile.setting("sso_account_id").empty() && profile.setting("sso_role_name").empty())
      return nullptr;
    char const* const because = session.empty() ? "a role of an SSO login" : "sso_session";
    SsoSource::Settings settings{.profile = profile.name(),
                                 .session = session,
                                 .account = required(profile, "sso_account_id", because),
                                 .role = required(profile, "sso_role_name", because),
                                 .home = context_.environment("HOME"),
                                 .access = context_.access};
    if (session.empty()) settings.session = required(profile, "sso_start_url", because);
    std::string const region =
        checkedRegion(session.empty() ? required(profile, "sso_region", because)
                                      : context_.profiles.sectionSetting("sso-session " + session, "sso_region"));
    if (region.empty())
      throw ConfigurationError("sso_session of " + quotedName(profile) + " names \"" + session +
                               "\", but the config file has no such section with sso_region");
    settings.portalUrl = endpoint("sso", "portal.sso", region);
    settings.tokenUrl = endpoint("sso_oidc", "oidc", region);
    return std::make_unique<SsoSource>(std::move(settings), context_.files);
  }

  TokenService tokenService() const {
    return {endpoint("sts", "sts", context_.region) + '/', context_.region, context_.access};
  }

  std::string endpoint(std::string const& service, std::string const& host, std::string const& region) const {
    std::string const configured = configuredEndpoint(context_.environment, context_.profiles, active_, service);
    return configured.empty() ? "https://" + serviceHost(host, region) : configured;
  }

  CredentialsContext const& context_;
  Profile const& active_;
};

}  // namespace

std::shared_ptr<CredentialsCache> chooseCredentials(CredentialsContext const& context, Profile const& profile) {
  Source source = Choice(context, profile).choose();
  return source ? std::make_shared<CredentialsCache>(std::move(source)) : nullptr;
}

}  // namespace foundation::storage::s3
