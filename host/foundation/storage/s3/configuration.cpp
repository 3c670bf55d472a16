#include "foundation/storage/s3/configuration.hpp"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>

#include "foundation/core/text/ascii.hpp"
#include "foundation/storage/s3/profile_file.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

/// The sections of one profile in both files.
class Profile {
 public:
  Profile(Environment const& environment, FileReader const& files)
      : name_(environment("AWS_PROFILE")),
        credentialsFile_(read(environment, files, "AWS_SHARED_CREDENTIALS_FILE", "credentials")),
        configurationFile_(read(environment, files, "AWS_CONFIG_FILE", "config")) {
    bool const isExplicit = !name_.empty();
    if (!isExplicit) name_ = "default";
    credentials_ = section(credentialsFile_, name_);
    configuration_ = section(configurationFile_, "profile " + name_);
    if (configuration_ == nullptr && name_ == "default") configuration_ = section(configurationFile_, name_);
    if (isExplicit && credentials_ == nullptr && configuration_ == nullptr)
      throw ConfigurationError("AWS_PROFILE names the profile \"" + name_ +
                               "\", but neither the credentials file nor the config file has it");
  }

  /// A setting of the profile, from the credentials file or else the config file; empty if neither has it.
  std::string setting(char const* name) const {
    std::string value = find(credentials_, name);
    return value.empty() ? find(configuration_, name) : value;
  }

  /// A setting for S3 in the services section that the profile names; empty if there is none.
  std::string serviceSetting(std::string const& name) const {
    std::string const services = setting("services");
    return services.empty() ? std::string() : find(section(configurationFile_, "services " + services), "s3." + name);
  }

  std::optional<Credentials> credentials() const {
    for (ProfileSection const* each : {credentials_, configuration_}) {
      Credentials found{find(each, "aws_access_key_id"), find(each, "aws_secret_access_key"),
                        find(each, "aws_session_token")};
      if (found.accessKey.empty() && found.secret.empty()) continue;
      if (found.accessKey.empty() || found.secret.empty())
        throw ConfigurationError("the profile \"" + name_ +
                                 "\" sets only one of aws_access_key_id and aws_secret_access_key: set both");
      return found;
    }
    return std::nullopt;
  }

 private:
  static ProfileFile read(Environment const& environment, FileReader const& files, char const* variable,
                          char const* name) {
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

  static ProfileSection const* section(ProfileFile const& file, std::string const& name) {
    auto const found = file.find(name);
    return found == file.end() ? nullptr : &found->second;
  }

  static std::string find(ProfileSection const* section, std::string const& name) {
    if (section == nullptr) return {};
    auto const found = section->find(name);
    return found == section->end() ? std::string() : found->second;
  }

  std::string name_;
  ProfileFile credentialsFile_;
  ProfileFile configurationFile_;
  ProfileSection const* credentials_ = nullptr;
  ProfileSection const* configuration_ = nullptr;
};

std::string firstNonEmpty(std::initializer_list<std::string> values) {
  for (std::string const& value : values)
    if (!value.empty()) return value;
  return {};
}

std::optional<Credentials> environmentCredentials(Environment const& environment) {
  Credentials found{environment("AWS_ACCESS_KEY_ID"), environment("AWS_SECRET_ACCESS_KEY"),
                    environment("AWS_SESSION_TOKEN")};
  if (found.accessKey.empty() && found.secret.empty()) return std::nullopt;
  if (found.accessKey.empty() || found.secret.empty())
    throw ConfigurationError("only one of AWS_ACCESS_KEY_ID and AWS_SECRET_ACCESS_KEY is set: set both or neither");
  return found;
}

// The region becomes part of a host name and of the signature.
std::string checkedRegion(std::string region) {
  for (char const c : region)
    if (!(c == '-' || core::text::isDigit(c) || core::text::isLetter(c)))
      throw ConfigurationError("the region \"" + region +
                               "\" is invalid: use letters, digits and \"-\" only (see AWS_REGION)");
  return region;
}

std::string checkedEndpoint(std::string const& text) {
  if (text.empty()) return {};
  auto endpoint = normalizedEndpoint(text);
  // The message doesn't repeat the text, since it may contain a password.
  if (!endpoint)
    throw ConfigurationError(
        "the endpoint URL is invalid: use the form http[s]://host[:port][/path] (see AWS_ENDPOINT_URL)");
  return *std::move(endpoint);
}

unsigned checkedAttempts(std::string const& text) {
  if (text.empty()) return 0;
  unsigned attempts = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), attempts);
  if (error != std::errc() || end != text.data() + text.size() || attempts == 0)
    throw ConfigurationError(
        "the number of attempts (AWS_MAX_ATTEMPTS or max_attempts) must be a whole number above 0");
  return attempts;
}

std::optional<std::string> readFile(std::string const& path) {
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::fopen(path.c_str(), "re"), &std::fclose);
  std::string text;
  if (file) {
    char block[4096];
    while (std::size_t const count = std::fread(block, 1, sizeof block, file.get())) text.append(block, count);
    if (std::ferror(file.get()) == 0) return text;
  } else if (errno == ENOENT || errno == ENOTDIR) {
    return std::nullopt;
  }
  throw ConfigurationError("cannot read " + path + ": " + std::strerror(errno));
}

}  // namespace

Configuration makeConfiguration(Environment const& environment, FileReader const& files) {
  Profile const profile(environment, files);
  Configuration configuration;
  configuration.credentials = environmentCredentials(environment);
  if (!configuration.credentials) configuration.credentials = profile.credentials();
  configuration.region = checkedRegion(firstNonEmpty(
      {environment("AWS_REGION"), environment("AWS_DEFAULT_REGION"), profile.setting("region"), "us-east-1"}));
  configuration.endpoint =
      checkedEndpoint(firstNonEmpty({environment("AWS_ENDPOINT_URL_S3"), environment("AWS_ENDPOINT_URL"),
                                     profile.serviceSetting("endpoint_url"), profile.setting("endpoint_url")}));
  configuration.caBundle = firstNonEmpty({environment("AWS_CA_BUNDLE"), profile.setting("ca_bundle")});
  configuration.maximumAttempts =
      checkedAttempts(firstNonEmpty({environment("AWS_MAX_ATTEMPTS"), profile.setting("max_attempts")}));
  return configuration;
}

Configuration readConfiguration() {
  return makeConfiguration(
      [](char const* name) {
        char const* const value = std::getenv(name);
        return std::string(value == nullptr ? "" : value);
      },
      readFile);
}

}  // namespace foundation::storage::s3
