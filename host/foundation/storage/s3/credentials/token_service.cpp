#include "foundation/storage/s3/credentials/token_service.hpp"

#include <chrono>
#include <utility>

#include <pugixml.hpp>

#include "foundation/storage/s3/timestamp.hpp"

namespace foundation::storage::s3 {
namespace {

std::string defaultSessionName() {
  auto const now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  return "korvan-storage-s3-" + std::to_string(now.time_since_epoch().count());
}

Credentials parseResponse(std::string const& body, std::string const& action) {
  pugi::xml_document document;
  if (!document.load_buffer(body.data(), body.size())) throw CredentialsError("the token service's response isn't XML");
  pugi::xml_node const node =
      document.child((action + "Response").c_str()).child((action + "Result").c_str()).child("Credentials");
  Credentials credentials{node.child_value("AccessKeyId"), node.child_value("SecretAccessKey"),
                          node.child_value("SessionToken")};
  auto const expiration = parseTimestamp(node.child_value("Expiration"));
  if (credentials.accessKey.empty() || credentials.secret.empty() || credentials.sessionToken.empty() || !expiration)
    throw CredentialsError("the token service's response has no complete credentials");
  credentials.expiration = std::chrono::floor<std::chrono::seconds>(*expiration);
  return credentials;
}

}  // namespace

Credentials callTokenService(TokenService const& service, Role const& role, std::string const& action, Query parameters,
                             Credentials const* credentials, Secrets secrets) {
  parameters.insert(parameters.end(),
                    {{"Action", action},
                     {"Version", "2011-06-15"},
                     {"RoleArn", role.arn},
                     {"RoleSessionName", role.sessionName.empty() ? defaultSessionName() : role.sessionName}});
  HttpRequest request{.method = "POST", .url = service.url, .body = canonicalQuery(std::move(parameters))};
  if (credentials != nullptr) {
    request.signature = Signature{*credentials, service.region, "sts"};
    secrets.insert(secrets.end(), {credentials->secret, credentials->sessionToken});
  }
  return parseResponse(successBody(callService(request, service.access), service.access, std::move(secrets)), action);
}

}  // namespace foundation::storage::s3
