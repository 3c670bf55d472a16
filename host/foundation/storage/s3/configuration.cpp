#include "foundation/storage/s3/configuration.hpp"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>

#include "foundation/storage/s3/credentials/source_choice.hpp"
#include "foundation/storage/s3/service_endpoint.hpp"

namespace foundation::storage::s3 {
namespace {

std::string firstNonEmpty(std::initializer_list<std::string> values) {
  for (std::string const& value : values)
    if (!value.empty()) return value;
  return {};
}

Profile activeProfile(Profiles const& profiles, Environment const& environment) {
  std::string const name = environment("AWS_PROFILE");
  if (auto profile = profiles.find(name.empty() ? "default" : name)) return *std::move(profile);
  if (name.empty()) return Profile("default", nullptr, nullptr);
  throw ConfigurationError("AWS_PROFILE names the profile \"" + name +
                           "\", but neither the credentials file nor the config file has it");
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
  Profiles const profiles(environment, files);
  Profile const profile = activeProfile(profiles, environment);
  Configuration configuration;
  configuration.region = checkedRegion(firstNonEmpty(
      {environment("AWS_REGION"), environment("AWS_DEFAULT_REGION"), profile.setting("region"), "us-east-1"}));
  configuration.endpoint = configuredEndpoint(environment, profiles, profile, "s3");
  configuration.caBundle = firstNonEmpty({environment("AWS_CA_BUNDLE"), profile.setting("ca_bundle")});
  configuration.maximumAttempts =
      checkedAttempts(firstNonEmpty({environment("AWS_MAX_ATTEMPTS"), profile.setting("max_attempts")}));
  configuration.credentials =
      chooseCredentials({environment, files, profiles, configuration.region, configuration.caBundle}, profile);
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
