#include "foundation/storage/s3/url.hpp"

#include <algorithm>
#include <memory>
#include <new>

#include <curl/curl.h>

#include "foundation/core/text/ascii.hpp"
#include "foundation/core/text/percent.hpp"

namespace foundation::storage::s3 {
namespace {

struct FreeText {
  void operator()(char* text) const noexcept { curl_free(text); }
};
using CurlText = std::unique_ptr<char, FreeText>;

struct FreeUrl {
  void operator()(CURLU* url) const noexcept { curl_url_cleanup(url); }
};

// Null if the URL doesn't have the part.
CurlText getPart(CURLU* url, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, 0) == CURLUE_OUT_OF_MEMORY) throw std::bad_alloc();
  return CurlText(text);
}

// A label of a host name (RFC 1123). Names with a dot are excluded, since no wildcard certificate covers them.
bool isHostLabel(std::string_view bucket) {
  return bucket.size() >= 3 && bucket.size() <= 63 && bucket.front() != '-' && bucket.back() != '-' &&
         std::all_of(bucket.begin(), bucket.end(),
                     [](char c) { return core::text::isDigit(c) || core::text::isLower(c) || c == '-'; });
}

// Whether the URL's host is an IP address, which can't have a bucket's name in front of it.
bool isAddress(std::string_view afterScheme) {
  std::string_view const host = afterScheme.substr(0, afterScheme.find_first_of(":/"));
  return host.starts_with('[') || host.find_first_not_of("0123456789.") == std::string_view::npos;
}

}  // namespace

std::string_view domainOf(std::string_view region) {
  constexpr std::string_view domains[][2] = {{"cn-", "amazonaws.com.cn"},    {"us-iso-", "c2s.ic.gov"},
                                             {"us-isob-", "sc2s.sgov.gov"},  {"us-isof-", "csp.hci.ic.gov"},
                                             {"eu-isoe-", "cloud.adc-e.uk"}, {"eusc-", "amazonaws.eu"}};
  for (auto const& [prefix, domain] : domains)
    if (region.starts_with(prefix)) return domain;
  return "amazonaws.com";
}

std::string percentEncode(std::string_view bytes) {
  if (bytes.empty()) return {};  // libcurl takes a length of 0 for "measure the text"
  CurlText const text(curl_easy_escape(nullptr, bytes.data(), static_cast<int>(bytes.size())));
  if (!text) throw std::bad_alloc();
  return text.get();
}

std::optional<std::string> percentDecode(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i] == '+' ? ' ' : text[i];
      continue;
    }
    int const byte = core::text::percentEncodedByte(text.substr(i + 1));
    if (byte < 0) return std::nullopt;
    bytes += static_cast<char>(byte);
    i += 2;
  }
  return bytes;
}

std::optional<std::string> normalizedEndpoint(std::string const& text) {
  if (text.find('\0') != std::string::npos) return std::nullopt;  // libcurl would see no more than what precedes it
  std::unique_ptr<CURLU, FreeUrl> const url(curl_url());
  if (!url) throw std::bad_alloc();
  if (curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_PATH_AS_IS | CURLU_DISALLOW_USER) != CURLUE_OK)
    return std::nullopt;
  CurlText const scheme = getPart(url.get(), CURLUPART_SCHEME);
  CurlText const whole = getPart(url.get(), CURLUPART_URL);
  if (!scheme || !whole || getPart(url.get(), CURLUPART_QUERY) || getPart(url.get(), CURLUPART_FRAGMENT))
    return std::nullopt;
  std::string_view const schemeName = scheme.get();  // in lower case
  if (schemeName != "http" && schemeName != "https") return std::nullopt;
  std::string endpoint = whole.get();
  while (endpoint.back() == '/') endpoint.pop_back();
  return endpoint;
}

std::string canonicalQuery(Query query) {
  for (auto& [name, value] : query) {
    name = percentEncode(name);
    value = percentEncode(value);
  }
  std::sort(query.begin(), query.end());
  std::string text;
  for (auto const& [name, value] : query) {
    if (!text.empty()) text += '&';
    text += name;
    text += '=';
    text += value;
  }
  return text;
}

std::string bucketUrl(Configuration const& configuration, std::string_view region, std::string_view bucket) {
  std::string url = configuration.endpoint;
  if (url.empty()) url.append("https://s3.").append(region).append(".").append(domainOf(region));
  std::size_t const host = url.find("://") + 3;
  bool const wantsHost = configuration.addressing == Addressing::virtualHost ||
                         (configuration.addressing == Addressing::automatic && configuration.endpoint.empty());
  if (!wantsHost || !isHostLabel(bucket) || isAddress(std::string_view(url).substr(host)))
    return url + '/' + percentEncode(bucket);
  return url.insert(host, std::string(bucket) + '.') + '/';
}

}  // namespace foundation::storage::s3
