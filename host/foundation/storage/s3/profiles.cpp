#include "foundation/storage/s3/profiles.hpp"

#include <utility>

namespace foundation::storage::s3 {
namespace {

ProfileFile read(Environment const& environment, FileReader const& files, char const* variable, char const* name) {
  std::string path = environment(variable);
  std::string const home = environment("HOME");
  if (path.empty()) {
    if (home.empty()) return {};
    path = home + "/.aws/" + name;
  } else if (path.starts_with("~/")) {
    path.replace(0, 1, home);
  }
  return parseProfileFile(files(path).value_or(std::string()));
}

ProfileSection const* sectionOf(ProfileFile const& file, std::string const& name) {
  auto const found = file.find(name);
  return found == file.end() ? nullptr : &found->second;
}

}  // namespace

Profile::Profile(std::string name, ProfileSection const* credentials, ProfileSection const* configuration)
    : name_(std::move(name)), credentials_(credentials), configuration_(configuration) {}

std::string Profile::setting(std::string_view name) const {
  std::string value = settingIn(credentials_, name);
  return value.empty() ? settingIn(configuration_, name) : value;
}

Profiles::Profiles(Environment const& environment, FileReader const& files)
    : credentialsFile_(read(environment, files, "AWS_SHARED_CREDENTIALS_FILE", "credentials")),
      configFile_(read(environment, files, "AWS_CONFIG_FILE", "config")) {}

std::optional<Profile> Profiles::find(std::string const& name) const {
  ProfileSection const* const credentials = sectionOf(credentialsFile_, name);
  ProfileSection const* configuration = sectionOf(configFile_, "profile " + name);
  if (configuration == nullptr && name == "default") configuration = sectionOf(configFile_, name);
  if (credentials == nullptr && configuration == nullptr) return std::nullopt;
  return Profile(name, credentials, configuration);
}

std::string Profiles::sectionSetting(std::string const& section, std::string_view name) const {
  return settingIn(sectionOf(configFile_, section), name);
}

std::string settingIn(ProfileSection const* section, std::string_view name) {
  if (section == nullptr) return {};
  auto const found = section->find(name);
  return found == section->end() ? std::string() : found->second;
}

}  // namespace foundation::storage::s3
