#include "foundation/storage/s3/redaction.hpp"

#include <string_view>

#include <boost/archive/iterators/base64_from_binary.hpp>
#include <boost/archive/iterators/transform_width.hpp>

#include "foundation/core/text/percent.hpp"

namespace foundation::storage::s3 {
namespace {

// Without the padding, which depends on what follows the secret.
std::string base64(std::string_view bytes) {
  using namespace boost::archive::iterators;
  using Encoded = base64_from_binary<transform_width<std::string_view::const_iterator, 6, 8>>;
  return std::string(Encoded(bytes.begin()), Encoded(bytes.end()));
}

// How many characters at the start of the text are the secret, each of its bytes as it is or percent-encoded; 0 if it
// isn't there.
std::size_t matchedLength(std::string_view text, std::string_view secret) {
  std::size_t length = 0;
  for (char const byte : secret) {
    std::string_view const rest = text.substr(length);
    if (rest.empty()) return 0;
    if (rest.front() == byte)
      ++length;
    else if (rest.front() == '%' && core::text::percentEncodedByte(rest.substr(1)) == static_cast<unsigned char>(byte))
      length += 3;
    else
      return 0;
  }
  return length;
}

void redactOne(std::string& text, std::string_view secret) {
  for (std::size_t at = 0; at < text.size(); ++at)
    if (std::size_t const length = matchedLength(std::string_view(text).substr(at), secret); length != 0) {
      text.replace(at, length, "***");
      at += 2;
    }
}

}  // namespace

void redact(std::string& text, std::vector<std::string> const& secrets) {
  for (std::string const& secret : secrets) {
    redactOne(text, secret);
    redactOne(text, base64(secret));
  }
}

std::vector<std::string> userInformation(std::string const& proxy) {
  auto const end = proxy.rfind('@');
  if (end == std::string::npos) return {};
  auto const scheme = proxy.find("://");
  std::size_t const begin = scheme < end ? scheme + 3 : 0;
  std::string const written = proxy.substr(begin, end - begin);
  std::string decoded;
  for (std::size_t i = 0; i < written.size(); ++i) {
    int const byte = written[i] == '%' ? core::text::percentEncodedByte(std::string_view(written).substr(i + 1)) : -1;
    decoded += byte < 0 ? written[i] : static_cast<char>(byte);
    if (byte >= 0) i += 2;
  }
  std::vector<std::string> secrets;
  for (std::string const& both : {written, decoded}) {
    // Anything shorter may also be a part of other words, and is recognised by what surrounds it.
    constexpr std::size_t shortest = 4;
    secrets.push_back(both.size() < shortest ? both + '@' : both);
    if (auto const colon = both.find(':'); colon < both.size() - shortest) secrets.push_back(both.substr(colon + 1));
  }
  return secrets;
}

}  // namespace foundation::storage::s3
