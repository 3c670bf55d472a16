#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/storage/s3/configuration_error.hpp"
#include "foundation/storage/s3/credentials/credentials_cache.hpp"
#include "foundation/storage/s3/profiles.hpp"
#include "foundation/storage/vfs/object_store_settings.hpp"

namespace foundation::storage::s3 {

/// How to make connections.
struct ConnectionOptions {
  std::string caBundle = {};     ///< a file of certificates to trust; empty for the system's
  unsigned connectTimeout = 10;  ///< seconds until a connection is made, the look-up of the host included; 0 for ever
  unsigned readTimeout = 60;     ///< seconds without a byte of the response; 0 for ever
};

/// Whether a bucket's name is part of the host name or of the path in URLs.
enum class Addressing {
  automatic,  ///< of the path if the endpoint is configured, of the host name otherwise
  path,
  virtualHost,
};

/// How to reach the store. A plain value.
struct Configuration {
  std::shared_ptr<CredentialsCache> credentials;  ///< if null, requests aren't signed
  bool noSignRequest = false;                     ///< there are no credentials because none are wanted
  bool requesterPays = false;                     ///< whoever makes the requests agrees to pay for them
  std::string region;                             ///< letters, digits and "-"
  std::string endpoint;                           ///< see `normalizedEndpoint`; empty for the region's own
  Addressing addressing = Addressing::automatic;
  ConnectionOptions connection;
  std::vector<std::string> proxies;  ///< URLs, which may contain passwords; libcurl chooses one by itself
  unsigned maximumAttempts = 0;      ///< attempts at one request; 0 for the default
};

/// Whether the region has only characters that host names and signatures may contain: letters, digits and "-".
bool isRegion(std::string_view text);

/// Makes the configuration from the host's settings and from those that S3 clients customarily read. Each comes from
/// the first of its sources that has it, before which goes the host's setting:
///
/// - profile: AWS_PROFILE; "default"
/// - credentials: see `chooseCredentials`; keys and web identity in the environment don't count if the host sets a
///   profile
/// - no credentials at all: AWS_NO_SIGN_REQUEST ("true", "yes" or "1")
/// - requester pays: AWS_REQUEST_PAYER ("requester")
/// - region: AWS_REGION; AWS_DEFAULT_REGION; the profile's `region`; "us-east-1"
/// - endpoint: AWS_ENDPOINT_URL_S3; AWS_ENDPOINT_URL; `endpoint_url` of "s3" in the profile's `services` section; the
///   profile's `endpoint_url`
/// - addressing: AWS_S3_ADDRESSING_STYLE; `addressing_style` of `s3` in the profile ("auto", "path" or "virtual")
/// - timeouts, in seconds: AWS_CLI_CONNECT_TIMEOUT and AWS_CLI_READ_TIMEOUT; the profile's `cli_connect_timeout` and
///   `cli_read_timeout`
/// - certificates: AWS_CA_BUNDLE; the profile's `ca_bundle`
/// - attempts: AWS_MAX_ATTEMPTS; the profile's `max_attempts`
/// - proxies: http_proxy, https_proxy, HTTPS_PROXY, all_proxy and ALL_PROXY, all of them
///
/// The files are those named by AWS_SHARED_CREDENTIALS_FILE and AWS_CONFIG_FILE, by default ~/.aws/credentials and
/// ~/.aws/config, where ~ is HOME. Throws `ConfigurationError` for half a pair of keys, a profile that is named and
/// that neither file has, and malformed values. Makes no request.
Configuration makeConfiguration(Environment const& environment, FileReader const& files,
                                vfs::ObjectStoreSettings const& settings = {});

/// The configuration from the settings, the environment and the files of this process.
Configuration readConfiguration();

}  // namespace foundation::storage::s3
