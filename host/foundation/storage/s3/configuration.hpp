#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

namespace foundation::storage::s3 {

struct Credentials {
  std::string accessKey;
  std::string secret;
  std::string sessionToken;  ///< empty where there is none
};

/// How the store is reached. A plain value.
struct Configuration {
  std::optional<Credentials> credentials;  ///< nothing: requests go unsigned
  std::string region;                      ///< of letters, digits and "-"
  std::string endpoint;          ///< "http[s]://host[:port][/path]" without a final "/"; empty: the region's own
  std::string caBundle;          ///< file of certificates to trust; empty: the system's
  unsigned maximumAttempts = 0;  ///< tries for one request; 0: the default
};

/// A configuration that can't be used, said in words that hold no secret.
class ConfigurationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The value of an environment variable; empty where it isn't set.
using Environment = std::function<std::string(char const* name)>;

/// The text of the file at the path; nothing where there is none. Throws `ConfigurationError` when it can't be read.
using FileReader = std::function<std::optional<std::string>(std::string const& path)>;

/// The configuration after the customs of such stores' users. Each setting is taken from the first place that has it:
///
/// - profile: AWS_PROFILE, else "default"
/// - credentials, as a whole: AWS_ACCESS_KEY_ID with AWS_SECRET_ACCESS_KEY and AWS_SESSION_TOKEN; the profile in the
/// credentials file;
///   the profile in the configuration file
/// - region: AWS_REGION, AWS_DEFAULT_REGION, the profile's `region`, "us-east-1"
/// - endpoint: AWS_ENDPOINT_URL_S3, AWS_ENDPOINT_URL, `endpoint_url` of "s3" in the services section that the profile
/// names, the
///   profile's `endpoint_url`
/// - certificates: AWS_CA_BUNDLE, the profile's `ca_bundle`
/// - attempts: AWS_MAX_ATTEMPTS, the profile's `max_attempts`
///
/// The files are those named by AWS_SHARED_CREDENTIALS_FILE and AWS_CONFIG_FILE, else ~/.aws/credentials and
/// ~/.aws/config (where ~ is HOME). Throws `ConfigurationError` for half a pair of credentials, a profile that was
/// asked for and isn't there, and malformed values.
Configuration makeConfiguration(Environment const& environment, FileReader const& files);

/// The configuration of this process: its environment and the files on its disk.
Configuration readConfiguration();

}  // namespace foundation::storage::s3
