#include "foundation/storage/s3/credentials/instance_source.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

#include "foundation/core/text/ascii.hpp"
#include "foundation/storage/s3/credentials/json_credentials.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr ServicePolicy policy{std::chrono::seconds(1), std::chrono::seconds(1), 1};
constexpr std::chrono::minutes extension(10);
constexpr char rolesPath[] = "/latest/meta-data/iam/security-credentials/";

std::string endpointOf(Environment const& environment) {
  std::string const text = environment("AWS_EC2_METADATA_SERVICE_ENDPOINT");
  if (text.empty())
    return core::text::lowerCase<char>(environment("AWS_EC2_METADATA_SERVICE_ENDPOINT_MODE")) == "ipv6"
               ? "http://[fd00:ec2::254]"
               : "http://169.254.169.254";
  auto endpoint = normalizedEndpoint(text);
  if (!endpoint)
    throw ConfigurationError("AWS_EC2_METADATA_SERVICE_ENDPOINT is invalid: use the form http://host[:port]");
  return *std::move(endpoint);
}

// Whether the outcome means that the machine has no such service: nothing answers, or something that doesn't know it.
bool isAbsence(RequestOutcome const& outcome) {
  auto const* const response = std::get_if<Response>(&outcome.last);
  return response == nullptr || (response->status >= 400 && response->status < 500);
}

}  // namespace

InstanceSource::InstanceSource(Environment const& environment) : endpoint_(endpointOf(environment)) {}

bool InstanceSource::isEnabled(Environment const& environment) {
  return core::text::lowerCase<char>(environment("AWS_EC2_METADATA_DISABLED")) != "true";
}

std::optional<Credentials> InstanceSource::fetch() {
  RequestOutcome const opened = ask("/latest/api/token", "PUT", "X-aws-ec2-metadata-token-ttl-seconds: 21600");
  if (isAbsence(opened)) return std::nullopt;
  std::string const token = successBody(opened, {}, {});
  requireNoControl(token, "the metadata service's token");
  std::string const authorization = "X-aws-ec2-metadata-token: " + token;

  RequestOutcome const roles = ask(rolesPath, "GET", authorization);
  auto const* const answer = std::get_if<Response>(&roles.last);
  if (answer != nullptr && answer->status == 404) return std::nullopt;  // a machine without a role
  std::string role = successBody(roles, {}, {token});
  role.erase(std::min(role.find_first_of("\r\n"), role.size()));
  if (role.empty()) return std::nullopt;

  Credentials credentials =
      parseServiceCredentials(successBody(ask(rolesPath + percentEncode(role), "GET", authorization), {}, {token}));
  // During an outage the service repeats credentials past their expiration, which stores then still accept.
  auto const now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  if (credentials.expiration && *credentials.expiration <= now) credentials.expiration = now + extension;
  return credentials;
}

RequestOutcome InstanceSource::ask(std::string const& path, std::string const& method, std::string header) const {
  return callService({.method = method, .url = endpoint_ + path, .headers = {std::move(header)}, .direct = true}, {},
                     policy);
}

}  // namespace foundation::storage::s3
