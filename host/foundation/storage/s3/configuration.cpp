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
#include "foundation/storage/s3/credentials/source_choice.hpp"
#include "foundation/storage/s3/service_endpoint.hpp"

namespace foundation::storage::s3 {
namespace {

std::string firstNonEmpty(std::initializer_list<std::string> values) {
  for (std::string const& value : values)
    if (!value.empty()) return value;
  return {};
}

Profile activeProfile(Profiles const& profiles, std::string const& name) {
  if (auto profile = profiles.find(name.empty() ? "default" : name)) return *std::move(profile);
  if (name.empty()) return Profile("default", nullptr, nullptr);
  throw ConfigurationError("the profile \"" + name +
                           "\" (see AWS_PROFILE) is in neither the credentials file nor the config file");
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
  Profiles const profiles(environment, files);
  Profile const profile = activeProfile(profiles, firstNonEmpty({settings.profile, environment("AWS_PROFILE")}));
  Configuration configuration;
  configuration.requesterPays = settings.requesterPays || checkedPayer(environment("AWS_REQUEST_PAYER"));
  configuration.region =
      checkedRegion(firstNonEmpty({settings.region, environment("AWS_REGION"), environment("AWS_DEFAULT_REGION"),
                                   profile.setting("region"), "us-east-1"}));
  configuration.endpoint = settings.endpointUrl.empty() ? configuredEndpoint(environment, profiles, profile, "s3")
                                                        : checkedEndpoint(settings.endpointUrl);
  configuration.addressing = checkedAddressing(
      firstNonEmpty({environment("AWS_S3_ADDRESSING_STYLE"), profile.setting("s3.addressing_style")}));
  configuration.connection = connectionOptions(environment, profile);
  for (char const* const variable : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
    if (std::string proxy = environment(variable); !proxy.empty()) configuration.proxies.push_back(std::move(proxy));
  configuration.maximumAttempts =
      checkedNumber(firstNonEmpty({environment("AWS_MAX_ATTEMPTS"), profile.setting("max_attempts")}), 0, 1, 1000,
                    "the number of attempts (AWS_MAX_ATTEMPTS or max_attempts)");
  configuration.noSignRequest = settings.noSignRequest || checkedFlag(environment("AWS_NO_SIGN_REQUEST"));
  if (!configuration.noSignRequest)
    configuration.credentials =
        chooseCredentials({.environment = environment,
                           .files = files,
                           .profiles = profiles,
                           .profileIsExplicit = !settings.profile.empty(),
                           .region = configuration.region,
                           .access = {configuration.connection.caBundle, configuration.proxies}},
                          profile);
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
