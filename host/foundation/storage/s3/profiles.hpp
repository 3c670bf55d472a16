#pragma once

#include <functional>
#include <optional>
#include <string>

#include "foundation/storage/s3/profile_file.hpp"

namespace foundation::storage::s3 {

/// The value of an environment variable; empty if it isn't set.
using Environment = std::function<std::string(char const* name)>;

/// The text of the file at the path; nothing if it doesn't exist. Throws `ConfigurationError` if it can't be read.
using FileReader = std::function<std::optional<std::string>(std::string const& path)>;

/// The sections of one profile in both files. Valid as long as the `Profiles` that it comes from.
class Profile {
 public:
  Profile(std::string name, ProfileSection const* credentials, ProfileSection const* configuration);

  std::string const& name() const noexcept { return name_; }

  /// A setting, from the credentials file or else the config file; empty if neither has it.
  std::string setting(std::string_view name) const;

  /// The sections themselves, null if the file has none: settings that belong together come from one file.
  ProfileSection const* inCredentialsFile() const noexcept { return credentials_; }
  ProfileSection const* inConfigFile() const noexcept { return configuration_; }

 private:
  std::string name_;
  ProfileSection const* credentials_;
  ProfileSection const* configuration_;
};

/// The shared credentials and config files.
class Profiles {
 public:
  /// Reads the files that AWS_SHARED_CREDENTIALS_FILE and AWS_CONFIG_FILE name, by default ~/.aws/credentials and
  /// ~/.aws/config, where ~ is HOME. Throws `ConfigurationError` if one can't be read; a missing file is an empty one.
  Profiles(Environment const& environment, FileReader const& files);

  /// The profile of that name; nothing if neither file has it.
  std::optional<Profile> find(std::string const& name) const;

  /// A setting in another section of the config file, such as "services NAME"; empty if there is none.
  std::string sectionSetting(std::string const& section, std::string_view name) const;

 private:
  ProfileFile credentialsFile_;
  ProfileFile configFile_;
};

/// A setting in a section; empty if the section is null or doesn't have it.
std::string settingIn(ProfileSection const* section, std::string_view name);

}  // namespace foundation::storage::s3
