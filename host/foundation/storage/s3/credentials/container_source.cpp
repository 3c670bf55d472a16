#include "foundation/storage/s3/credentials/container_source.hpp"

#include <utility>

#include "foundation/storage/s3/credentials/json_credentials.hpp"
#include "foundation/storage/s3/credentials/local_url.hpp"
#include "foundation/storage/s3/credentials/token_file.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr char serviceUrl[] = "http://169.254.170.2";
constexpr ServicePolicy policy{std::chrono::seconds(2), std::chrono::seconds(10), 3};

// Plain HTTP would show the credentials to a network, but not within the machine.
std::string checkedUrl(std::string url) {
  UrlSafety const safety = safetyOf(url);
  if (safety == UrlSafety::malformed)
    throw ConfigurationError("AWS_CONTAINER_CREDENTIALS_FULL_URI is invalid: use the form http[s]://host[:port]/path");
  if (safety == UrlSafety::exposed)
    throw ConfigurationError(
        "AWS_CONTAINER_CREDENTIALS_FULL_URI names a host over plain HTTP that is neither loopback nor link-local");
  return url;
}

}  // namespace

ContainerSource::ContainerSource(Environment const& environment, FileReader files, ServiceAccess access)
    : tokenFile_(environment("AWS_CONTAINER_AUTHORIZATION_TOKEN_FILE")),
      token_(environment("AWS_CONTAINER_AUTHORIZATION_TOKEN")),
      files_(std::move(files)),
      access_(std::move(access)) {
  std::string const path = environment("AWS_CONTAINER_CREDENTIALS_RELATIVE_URI");
  if (!path.empty() && path.front() != '/')
    throw ConfigurationError("AWS_CONTAINER_CREDENTIALS_RELATIVE_URI doesn't begin with \"/\"");
  url_ = path.empty() ? checkedUrl(environment("AWS_CONTAINER_CREDENTIALS_FULL_URI")) : serviceUrl + path;
}

bool ContainerSource::isConfigured(Environment const& environment) {
  return !environment("AWS_CONTAINER_CREDENTIALS_RELATIVE_URI").empty() ||
         !environment("AWS_CONTAINER_CREDENTIALS_FULL_URI").empty();
}

std::optional<Credentials> ContainerSource::fetch() {
  std::string const token = tokenFile_.empty() ? token_ : readToken(files_, tokenFile_);
  HttpRequest request{.url = url_, .direct = true};
  requireNoControl(token, "the authorization token");
  if (!token.empty()) request.headers.push_back("Authorization: " + token);
  return parseServiceCredentials(successBody(callService(request, access_, policy), access_, {token}));
}

}  // namespace foundation::storage::s3
