#include "foundation/storage/s3/credentials/static_source.hpp"

#include <utility>

namespace foundation::storage::s3 {
namespace {

std::optional<Credentials> wholePair(Credentials keys, std::string const& fault) {
  if (keys.accessKey.empty() && keys.secret.empty()) return std::nullopt;
  if (keys.accessKey.empty() || keys.secret.empty()) throw ConfigurationError(fault);
  return keys;
}

}  // namespace

StaticSource::StaticSource(std::string name, Credentials credentials)
    : name_(std::move(name)), credentials_(std::move(credentials)) {}

std::optional<Credentials> environmentKeys(Environment const& environment) {
  return wholePair(
      {environment("AWS_ACCESS_KEY_ID"), environment("AWS_SECRET_ACCESS_KEY"), environment("AWS_SESSION_TOKEN")},
      "only one of AWS_ACCESS_KEY_ID and AWS_SECRET_ACCESS_KEY is set: set both or neither");
}

std::optional<Credentials> profileKeys(Profile const& profile, ProfileSection const* section) {
  return wholePair(
      {settingIn(section, "aws_access_key_id"), settingIn(section, "aws_secret_access_key"),
       settingIn(section, "aws_session_token")},
      "the profile \"" + profile.name() + "\" sets only one of aws_access_key_id and aws_secret_access_key: set both");
}

}  // namespace foundation::storage::s3
