#pragma once

#include <string>

#include "foundation/storage/s3/profiles.hpp"

namespace foundation::storage::s3 {

/// The endpoint that the user has set for a service, whose name is in lower case, such as "sts": AWS_ENDPOINT_URL_STS;
/// AWS_ENDPOINT_URL; `endpoint_url` of the service in the profile's `services` section; the profile's `endpoint_url`.
/// Empty if none is set; see `normalizedEndpoint`. Throws `ConfigurationError` for an invalid one.
std::string configuredEndpoint(Environment const& environment, Profiles const& profiles, Profile const& profile,
                               std::string const& service);

/// The endpoint in that form; empty for an empty text. Throws `ConfigurationError` for an invalid one.
std::string checkedEndpoint(std::string const& text);

/// The host name of a service in a region, such as "sts.eu-west-1.amazonaws.com".
std::string serviceHost(std::string const& service, std::string const& region);

/// The region, which becomes part of host names and of signatures. Throws `ConfigurationError` unless it has letters,
/// digits and "-" only.
std::string checkedRegion(std::string region);

}  // namespace foundation::storage::s3
