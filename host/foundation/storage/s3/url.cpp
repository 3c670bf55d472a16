#include "foundation/storage/s3/url.hpp"

#include <algorithm>

#include "foundation/core/text/ascii.hpp"
#include "foundation/core/text/percent.hpp"

namespace foundation::storage::s3 {
namespace {

using core::text::isDigit;
using core::text::isLower;

bool isUnreserved(char c) {
  return isDigit(c) || core::text::isLetter(c) || c == '-' || c == '.' || c == '_' || c == '~';
}

// One label after RFC 1123. A name with a dot could be one too, but no wildcard certificate would cover it.
bool isHostLabel(std::string_view bucket) {
  return bucket.size() >= 3 && bucket.size() <= 63 && bucket.front() != '-' && bucket.back() != '-' &&
         std::all_of(bucket.begin(), bucket.end(), [](char c) { return isDigit(c) || isLower(c) || c == '-'; });
}

}  // namespace

std::string percentEncode(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (char const c : bytes) {
    if (isUnreserved(c)) {
      text += c;
      continue;
    }
    core::text::appendPercentEncoded(text, {&c, 1});
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
    int const byte = core::text::percentEncodedByte(text.substr(i + 1));
    if (byte < 0) return std::nullopt;
    bytes += static_cast<char>(byte);
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
