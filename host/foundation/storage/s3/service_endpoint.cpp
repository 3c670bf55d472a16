#include "foundation/storage/s3/service_endpoint.hpp"

#include "foundation/core/text/ascii.hpp"
#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {

std::string configuredEndpoint(Environment const& environment, Profiles const& profiles, Profile const& profile,
                               std::string const& service) {
  std::string variable = "AWS_ENDPOINT_URL_";
  for (char const c : service) variable += core::text::isLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
  std::string text = environment(variable.c_str());
  if (text.empty()) text = environment("AWS_ENDPOINT_URL");
  if (std::string const services = profile.setting("services"); text.empty() && !services.empty())
    text = profiles.sectionSetting("services " + services, service + ".endpoint_url");
  if (text.empty()) text = profile.setting("endpoint_url");
  return checkedEndpoint(text);
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

std::string serviceHost(std::string const& service, std::string const& region) {
  return service + '.' + region + '.' + std::string(domainOf(region));
}

std::string checkedRegion(std::string region) {
  if (!isRegion(region))
    throw ConfigurationError("the region \"" + region +
                             "\" is invalid: use letters, digits and \"-\" only (see AWS_REGION)");
  return region;
}

}  // namespace foundation::storage::s3
