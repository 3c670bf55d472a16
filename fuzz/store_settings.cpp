#include <algorithm>
#include <memory>
#include <optional>

#include <curl/curl.h>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/profile_file.hpp"
#include "foundation/storage/s3/url.hpp"
#include "fuzz/input.hpp"

namespace korvan::fuzz {
namespace {

namespace s3 = foundation::storage::s3;
constexpr char secret[] = "a-secret-that-nobody-may-see";

bool hasControl(std::string const& text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return (c >= 0 && c <= ' ') || c == 0x7F; });
}

// The host that libcurl would send a request for the URL to; empty if it refuses the URL.
std::string hostOf(std::string const& url) {
  std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> const parts(curl_url(), curl_url_cleanup);
  if (curl_url_set(parts.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) return {};
  for (CURLUPart const unwanted : {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_QUERY, CURLUPART_FRAGMENT}) {
    char* part = nullptr;
    require(curl_url_get(parts.get(), unwanted, &part, 0) != CURLUE_OK);
  }
  char* host = nullptr;
  require(curl_url_get(parts.get(), CURLUPART_HOST, &host, 0) == CURLUE_OK);
  std::unique_ptr<char, decltype(&curl_free)> const owner(host, curl_free);
  return host;
}

// No bucket's name leads a request to another host.
void checkHost(s3::Configuration const& configuration, std::string const& bucket) {
  std::string const host = hostOf(s3::bucketUrl(configuration, configuration.region, bucket));
  if (configuration.endpoint.empty())
    require(host.empty() || host.find('.' + configuration.region + ".") != std::string::npos);
  else
    require(host == hostOf(configuration.endpoint));
}

void checkConfiguration(FuzzedDataProvider& input) {
  std::string const region = takeBytes(input, 8);
  std::string const endpoint = input.PickValueInArray({"", "http://", "https://h"}) + takeBytes(input, 16);
  std::string const bucket = takeBytes(input, 8);
  std::string const file = input.ConsumeRemainingBytesAsString();
  auto const environment = [&](std::string const& name) {
    return name == "AWS_REGION" ? region : name == "AWS_ENDPOINT_URL" ? endpoint : name == "HOME" ? "/h" : "";
  };
  auto const files = [&](std::string const& path) {
    return path.ends_with("config") ? file : "[default]\naws_secret_access_key=" + std::string(secret) + '\n' + file;
  };
  try {
    auto const configuration = s3::makeConfiguration(environment, files);
    require(!hasControl(configuration.endpoint) && !configuration.endpoint.ends_with('/'));
    require(endpoint.find('\0') == std::string::npos);
    checkHost(configuration, bucket);
  } catch (s3::ConfigurationError const& error) {
    // The fuzzer may come upon the secret by itself, and name a region so.
    require(file.find(secret) != std::string::npos || std::string(error.what()).find(secret) == std::string::npos);
  }
}

// Line ends make no difference: CR LF gives the same settings as LF.
void checkProfiles(std::string text) {
  auto const profiles = s3::parseProfileFile(text);
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) text.insert(at, "\r");
  require(s3::parseProfileFile(text) == profiles);
  for (auto const& [section, settings] : profiles)
    for (auto const& [name, value] : settings) require((section + name + value).find('\n') == std::string::npos);
}

}  // namespace
}  // namespace korvan::fuzz

/// Profile files and endpoints: each is either refused, without the message quoting a secret, or used as it was meant.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  if (input.ConsumeBool())
    korvan::fuzz::checkProfiles(input.ConsumeRemainingBytesAsString());
  else
    korvan::fuzz::checkConfiguration(input);
  return 0;
}
