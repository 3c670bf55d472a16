#pragma once

#include <memory>
#include <string>

#include "foundation/storage/s3/configuration_error.hpp"
#include "foundation/storage/s3/credentials/credentials_cache.hpp"
#include "foundation/storage/s3/profiles.hpp"

namespace foundation::storage::s3 {

/// How to reach the store. A plain value.
struct Configuration {
  std::shared_ptr<CredentialsCache> credentials;  ///< if null, requests aren't signed
  std::string region;                             ///< letters, digits and "-"
  std::string endpoint;                           ///< see `normalizedEndpoint`; empty for the region's own
  std::string caBundle;                           ///< a file of certificates to trust; empty for the system's
  unsigned maximumAttempts = 0;                   ///< attempts at one request; 0 for the default
};

/// Makes the configuration from the settings that S3 clients customarily read. Each comes from the first of its sources
/// that has it:
///
/// - profile: AWS_PROFILE; "default"
/// - credentials, always together: AWS_ACCESS_KEY_ID with AWS_SECRET_ACCESS_KEY and AWS_SESSION_TOKEN; the profile in
///   the credentials file; the profile in the config file
/// - region: AWS_REGION; AWS_DEFAULT_REGION; the profile's `region`; "us-east-1"
/// - endpoint: AWS_ENDPOINT_URL_S3; AWS_ENDPOINT_URL; `endpoint_url` of "s3" in the profile's `services` section; the
///   profile's `endpoint_url`
/// - certificates: AWS_CA_BUNDLE; the profile's `ca_bundle`
/// - attempts: AWS_MAX_ATTEMPTS; the profile's `max_attempts`
///
/// The files are those named by AWS_SHARED_CREDENTIALS_FILE and AWS_CONFIG_FILE, by default ~/.aws/credentials and
/// ~/.aws/config, where ~ is HOME. Throws `ConfigurationError` for half a pair of credentials, a profile that
/// AWS_PROFILE names and neither file has, and malformed values.
Configuration makeConfiguration(Environment const& environment, FileReader const& files);

/// The configuration from the environment and the files of this process.
Configuration readConfiguration();

}  // namespace foundation::storage::s3
