#include "foundation/storage/s3/credentials/local_url.hpp"

#include <memory>
#include <new>

#include <arpa/inet.h>
#include <curl/curl.h>

#include "foundation/core/text/ascii.hpp"

namespace foundation::storage::s3 {
namespace {

bool isLocalHost(std::string host) {
  if (host == "localhost") return true;
  in_addr four{};
  if (inet_pton(AF_INET, host.c_str(), &four) == 1) {
    auto const address = ntohl(four.s_addr);
    return address >> 24 == 127 || address >> 16 == 0xA9FE;  // 127.0.0.0/8, 169.254.0.0/16
  }
  if (!host.starts_with('[') || !host.ends_with(']')) return false;
  host = host.substr(1, host.size() - 2);
  in6_addr six{};
  if (inet_pton(AF_INET6, host.c_str(), &six) != 1) return false;
  // fd00:ec2::23 is the address of a container's credentials service within the machine.
  constexpr in6_addr service{{{0xFD, 0, 0x0E, 0xC2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x23}}};
  return IN6_IS_ADDR_LOOPBACK(&six) || IN6_IS_ADDR_LINKLOCAL(&six) || IN6_ARE_ADDR_EQUAL(&six, &service);
}

}  // namespace

UrlSafety safetyOf(std::string const& url) {
  std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> const parts(curl_url(), &curl_url_cleanup);
  if (!parts) throw std::bad_alloc();
  if (curl_url_set(parts.get(), CURLUPART_URL, url.c_str(), CURLU_PATH_AS_IS | CURLU_DISALLOW_USER) != CURLUE_OK)
    return UrlSafety::malformed;
  auto const part = [&](CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(parts.get(), which, &text, 0) != CURLUE_OK) return std::string();
    std::unique_ptr<char, decltype(&curl_free)> const owner(text, &curl_free);
    return std::string(text);
  };
  std::string const scheme = part(CURLUPART_SCHEME);
  if (scheme == "https") return UrlSafety::safe;
  if (scheme != "http") return UrlSafety::malformed;
  return isLocalHost(core::text::lowerCase<char>(part(CURLUPART_HOST))) ? UrlSafety::safe : UrlSafety::exposed;
}

}  // namespace foundation::storage::s3
