#include "cli/match_location.hpp"

#include <unistd.h>

#include "cli/locations.hpp"
#include "foundation/core/text/ascii.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/core/text/escape.hpp"

namespace kglob {
namespace {

using foundation::core::text::hexDigits;
using foundation::core::text::hexValue;

void appendEncoded(std::string& text, char byte) {
  auto const value = static_cast<unsigned char>(byte);
  ((text += '%') += hexDigits[value >> 4]) += hexDigits[value & 15];
}

bool isSpecial(char byte) {
  return static_cast<unsigned char>(byte) <= ' ' || byte == '\x7F' ||
         std::string_view("\"<>\\^{|}`%#?").find(byte) != std::string_view::npos;
}

/// A path below an IRI, encoded as the search writes IRIs: what isn't ASCII stays as it is, unless it isn't UTF-8.
void appendAsIRI(std::string& iri, std::string_view path) {
  using namespace foundation::core::text;
  forEachCharacter(fromBytes(path), [&](std::u16string_view character) {
    std::string const bytes = toBytesLossy(character);
    bool const isEncoded = bytes.size() == 1 && (isSpecial(bytes[0]) || (bytes[0] & 0x80) != 0);
    isEncoded ? appendEncoded(iri, bytes[0]) : static_cast<void>(iri += bytes);
  });
}

}  // namespace

MatchLocation::MatchLocation(std::string const& rootFolder)
    : root_(absoluteRoot(rootFolder)), isIRI_(kglob::isIRI(rootFolder)) {}

bool MatchLocation::isRelative(std::string_view match) {
  return !match.starts_with('/') && !kglob::isIRI(match);
}

std::string MatchLocation::absolute(std::string_view match) const {
  if (kglob::isIRI(match) || (match.starts_with('/') && !isIRI_)) return std::string(match);
  std::string text = root_;
  if (match.starts_with('/')) {
    // In a store the first name is the bucket; the scheme "file" has an empty host before the path.
    bool const isFile = foundation::core::text::lowerCase(std::string_view(text).substr(0, 5)) == "file:";
    text.resize(text.find(':') + (isFile ? 3 : 2));
    appendAsIRI(text, match);
    return text;
  }
  if (!text.ends_with('/')) text += '/';
  if (isIRI_)
    appendAsIRI(text, match);
  else
    text += match;
  return text;
}

std::string linkTarget(std::string_view location) {
  bool const isLocal = !isIRI(location);
  std::string iri;
  if (isLocal) {
    char host[256] = "";
    static_cast<void>(gethostname(host, sizeof host - 1));
    (iri = "file://") += host;
  }
  for (char const byte : location) {
    if ((isLocal && isSpecial(byte)) || (byte & 0x80) != 0)
      appendEncoded(iri, byte);
    else
      iri += byte;
  }
  return iri;
}

std::string decoded(std::string_view location) {
  std::string text;
  if (!isIRI(location)) return text += location;
  for (std::size_t i = 0; i < location.size(); ++i) {
    bool const isEncoded = location[i] == '%' && i + 2 < location.size() && hexValue(location[i + 1]) >= 0 &&
                           hexValue(location[i + 2]) >= 0;
    if (isEncoded) {
      text += static_cast<char>(hexValue(location[i + 1]) * 16 + hexValue(location[i + 2]));
      i += 2;
    } else {
      text += location[i];
    }
  }
  return text;
}

}  // namespace kglob
