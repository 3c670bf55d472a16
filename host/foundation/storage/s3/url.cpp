#include "foundation/storage/s3/url.hpp"

#include <algorithm>

namespace foundation::storage::s3 {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isLower(char c) {
  return c >= 'a' && c <= 'z';
}

bool isUnreserved(char c) {
  return isDigit(c) || isLower(c) || (c >= 'A' && c <= 'Z') || c == '-' || c == '.' || c == '_' || c == '~';
}

int hexValue(char c) {
  if (isDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// One label after RFC 1123. A name with a dot could be one too, but no wildcard certificate would cover it.
bool isHostLabel(std::string_view bucket) {
  return bucket.size() >= 3 && bucket.size() <= 63 && bucket.front() != '-' && bucket.back() != '-' &&
         std::all_of(bucket.begin(), bucket.end(), [](char c) { return isDigit(c) || isLower(c) || c == '-'; });
}

}  // namespace

std::string percentEncode(std::string_view bytes) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size());
  for (char const c : bytes) {
    if (isUnreserved(c)) {
      text += c;
      continue;
    }
    auto const byte = static_cast<unsigned char>(c);
    text += '%';
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

std::optional<std::string> percentDecode(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i] == '+' ? ' ' : text[i];
      continue;
    }
    if (text.size() - i < 3) return std::nullopt;
    int const high = hexValue(text[i + 1]);
    int const low = hexValue(text[i + 2]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return bytes;
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

std::string bucketUrl(Configuration const& configuration, std::string_view bucket) {
  std::string const common = "s3." + configuration.region + ".amazonaws.com";
  if (!configuration.endpoint.empty()) return configuration.endpoint + '/' + percentEncode(bucket);
  if (isHostLabel(bucket)) return "https://" + std::string(bucket) + '.' + common + '/';
  return "https://" + common + '/' + percentEncode(bucket);
}

}  // namespace foundation::storage::s3
