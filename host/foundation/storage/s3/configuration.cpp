#include "foundation/storage/s3/configuration.hpp"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <utility>

#include "foundation/core/text/ascii.hpp"
#include "foundation/storage/s3/profile_file.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

/// The sections of one profile in both files.
class Profile {
 public:
  Profile(std::string name, Environment const& environment, FileReader const& files)
      : name_(std::move(name)),
        credentialsFile_(read(environment, files, "AWS_SHARED_CREDENTIALS_FILE", "credentials")),
        configurationFile_(read(environment, files, "AWS_CONFIG_FILE", "config")) {
    bool const isExplicit = !name_.empty();
    if (!isExplicit) name_ = "default";
    credentials_ = section(credentialsFile_, name_);
    configuration_ = section(configurationFile_, "profile " + name_);
    if (configuration_ == nullptr && name_ == "default") configuration_ = section(configurationFile_, name_);
    if (isExplicit && credentials_ == nullptr && configuration_ == nullptr)
      throw ConfigurationError("the profile \"" + name_ +
                               "\" (see AWS_PROFILE) is in neither the credentials file nor the config file");
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
  if (!isRegion(region))
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

unsigned checkedNumber(std::string const& text, unsigned otherwise, unsigned least, unsigned most, char const* name) {
  if (text.empty()) return otherwise;
  unsigned number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < least || number > most)
    throw ConfigurationError(std::string(name) + " must be a whole number from " + std::to_string(least) + " to " +
                             std::to_string(most));
  return number;
}

bool checkedFlag(std::string const& text) {
  std::string const value = core::text::lowerCase(std::string_view(text));
  if (value == "true" || value == "yes" || value == "1") return true;
  if (value.empty() || value == "false" || value == "no" || value == "0") return false;
  throw ConfigurationError("AWS_NO_SIGN_REQUEST must be \"true\" or \"false\"");
}

bool checkedPayer(std::string const& text) {
  if (text == "requester") return true;
  if (text.empty()) return false;
  throw ConfigurationError("AWS_REQUEST_PAYER must be \"requester\" if it is set");
}

Addressing checkedAddressing(std::string const& text) {
  if (text.empty() || text == "auto") return Addressing::automatic;
  if (text == "path") return Addressing::path;
  if (text == "virtual") return Addressing::virtualHost;
  throw ConfigurationError(
      "the addressing style (AWS_S3_ADDRESSING_STYLE or addressing_style) must be \"auto\", \"path\" or \"virtual\"");
}

ConnectionOptions connectionOptions(Environment const& environment, Profile const& profile) {
  constexpr unsigned longest = 86400;
  auto const timeout = [&](char const* variable, char const* setting, unsigned otherwise, char const* name) {
    return checkedNumber(firstNonEmpty({environment(variable), profile.setting(setting)}), otherwise, 0, longest, name);
  };
  ConnectionOptions options;
  options.caBundle = firstNonEmpty({environment("AWS_CA_BUNDLE"), profile.setting("ca_bundle")});
  options.connectTimeout =
      timeout("AWS_CLI_CONNECT_TIMEOUT", "cli_connect_timeout", options.connectTimeout,
              "the seconds for making a connection (AWS_CLI_CONNECT_TIMEOUT or cli_connect_timeout)");
  options.readTimeout = timeout("AWS_CLI_READ_TIMEOUT", "cli_read_timeout", options.readTimeout,
                                "the seconds without a response (AWS_CLI_READ_TIMEOUT or cli_read_timeout)");
  return options;
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

bool isRegion(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return c == '-' || core::text::isDigit(c) || core::text::isLetter(c); });
}

Configuration makeConfiguration(Environment const& environment, FileReader const& files,
                                vfs::ObjectStoreSettings const& settings) {
  Profile const profile(firstNonEmpty({settings.profile, environment("AWS_PROFILE")}), environment, files);
  Configuration configuration;
  configuration.noSignRequest = settings.noSignRequest || checkedFlag(environment("AWS_NO_SIGN_REQUEST"));
  if (!configuration.noSignRequest) {
    if (settings.profile.empty()) configuration.credentials = environmentCredentials(environment);
    if (!configuration.credentials) configuration.credentials = profile.credentials();
  }
  configuration.requesterPays = settings.requesterPays || checkedPayer(environment("AWS_REQUEST_PAYER"));
  configuration.region =
      checkedRegion(firstNonEmpty({settings.region, environment("AWS_REGION"), environment("AWS_DEFAULT_REGION"),
                                   profile.setting("region"), "us-east-1"}));
  configuration.endpoint = checkedEndpoint(
      firstNonEmpty({settings.endpointUrl, environment("AWS_ENDPOINT_URL_S3"), environment("AWS_ENDPOINT_URL"),
                     profile.serviceSetting("endpoint_url"), profile.setting("endpoint_url")}));
  configuration.addressing = checkedAddressing(
      firstNonEmpty({environment("AWS_S3_ADDRESSING_STYLE"), profile.setting("s3.addressing_style")}));
  configuration.connection = connectionOptions(environment, profile);
  for (char const* const variable : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
    if (std::string proxy = environment(variable); !proxy.empty()) configuration.proxies.push_back(std::move(proxy));
  configuration.maximumAttempts =
      checkedNumber(firstNonEmpty({environment("AWS_MAX_ATTEMPTS"), profile.setting("max_attempts")}), 0, 1, 1000,
                    "the number of attempts (AWS_MAX_ATTEMPTS or max_attempts)");
  return configuration;
}

Configuration readConfiguration() {
  return makeConfiguration(
      [](char const* name) {
        char const* const value = std::getenv(name);
        return std::string(value == nullptr ? "" : value);
      },
      readFile, vfs::objectStoreSettings());
}

}  // namespace foundation::storage::s3
