#include "foundation/storage/vfs/detail/iri_text.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

#include "foundation/core/text/ascii.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/core/text/percent.hpp"
#include "foundation/core/text/utf16.hpp"

namespace foundation::storage::vfs::iri_text {
namespace {

using core::text::isDigit;
using core::text::isLetter;
using core::text::isPairAt;
using core::text::percentEncodedByte;

// The ASCII characters that a written path shows as themselves.
constexpr std::array<bool, 128> makePlain() {
  std::array<bool, 128> plain{};
  for (std::size_t unit = 0x21; unit < 0x7F; ++unit) plain[unit] = true;
  for (char const encoded : std::string_view("\"<>\\^{|}`%#?")) plain[static_cast<unsigned char>(encoded)] = false;
  return plain;
}
constexpr std::array<bool, 128> plainAscii = makePlain();

// Whether a unit is written as itself whatever follows it: no surrogate and no control (C1 included).
bool isPlain(char16_t unit) {
  if (unit < 0x80) return plainAscii[unit];
  return unit >= 0xA0 && !core::text::isSurrogate(unit);
}

// Whether the text has only letters, digits and "-", ".", "/", "_", as nearly all names have. There is no branch inside
// the loop, so that compilers can vectorise it.
bool isUsual(std::u16string_view text) {
  std::uint16_t others = 0;
  for (char16_t const unit : text) {
    std::uint16_t const noLetter = static_cast<std::uint16_t>((unit | 0x20U) - u'a') > u'z' - u'a';
    std::uint16_t const noDigitOrSign = static_cast<std::uint16_t>(unit - u'-') > u'9' - u'-';  // also "." and "/"
    std::uint16_t const noLine = unit != u'_';
    others = static_cast<std::uint16_t>(others | (noLetter & noDigitOrSign & noLine));
  }
  return others == 0;
}

// Encodes the unit or pair at `at`. Returns the number of units encoded: 0 for a surrogate without a byte form.
std::size_t appendOne(std::u16string& written, std::u16string_view text, std::size_t at) {
  if (isPairAt(text, at)) {
    written.append(text, at, 2);
    return 2;
  }
  std::string bytes;
  if (!core::text::appendBytes(bytes, text.substr(at, 1))) return 0;
  core::text::appendPercentEncoded(written, bytes);
  return 1;
}

}  // namespace

std::size_t schemeLength(std::u16string_view text) noexcept {
  if (text.empty() || !isLetter(text.front())) return 0;
  std::size_t length = 1;
  while (length < text.size() && (isLetter(text[length]) || isDigit(text[length]) || text[length] == u'+' ||
                                  text[length] == u'-' || text[length] == u'.')) {
    ++length;
  }
  return text.substr(length, 3) == u"://" ? length : 0;
}

bool appendEncoded(std::u16string& written, std::u16string_view decoded) {
  if (isUsual(decoded)) {
    written.append(decoded);
    return true;
  }
  for (std::size_t at = 0; at < decoded.size();) {
    std::size_t plainEnd = at;
    while (plainEnd < decoded.size() && isPlain(decoded[plainEnd])) ++plainEnd;
    written.append(decoded, at, plainEnd - at);
    at = plainEnd;
    if (at == decoded.size()) break;
    std::size_t const taken = appendOne(written, decoded, at);
    if (taken == 0) return false;
    at += taken;
  }
  return true;
}

char const* appendNormalized(std::u16string& written, std::u16string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    char16_t const unit = text[at];
    if (unit == u'?') return "an IRI of a file or folder has no query; write \"?\" in a name as %3F";
    if (unit == u'#') return "an IRI of a file or folder has no fragment; write \"#\" in a name as %23";
    if (unit == u'%') {
      int const value = percentEncodedByte(text.substr(at + 1));
      if (value < 0) return "\"%\" must be followed by two hex digits; write \"%\" in a name as %25";
      if (value == '/') return "a name can't contain \"/\", so an IRI can't contain %2F";
      char const byte = static_cast<char>(value);
      core::text::appendPercentEncoded(written, {&byte, 1});
      at += 3;
    } else if (isPlain(unit)) {
      written.push_back(unit);
      ++at;
    } else {
      std::size_t const taken = appendOne(written, text, at);
      if (taken == 0) return "it contains half of a surrogate pair";
      at += taken;
    }
  }
  return nullptr;
}

void appendDecodedBytes(std::string& bytes, std::u16string_view written) {
  while (!written.empty()) {
    std::size_t const escape = std::min(written.find(u'%'), written.size());
    core::text::appendBytes(bytes, written.substr(0, escape));
    written.remove_prefix(escape);
    if (written.empty()) break;
    bytes.push_back(static_cast<char>(percentEncodedByte(written.substr(1))));
    written.remove_prefix(3);
  }
}

std::u16string decoded(std::u16string_view written) {
  if (written.find(u'%') == std::u16string_view::npos) return std::u16string(written);
  std::string bytes;
  appendDecodedBytes(bytes, written);
  return core::text::fromBytes(bytes);
}

std::size_t authorityStart(std::u16string_view path) noexcept {
  std::size_t start = 0;
  while (start < path.size()) {
    std::size_t const end = std::min(path.find(u'/', start), path.size());
    std::u16string_view const element = path.substr(start, end - start);
    if (!element.empty() && element != u"." && element != u"..") break;
    start = std::min(end + 1, path.size());
  }
  return start;
}

std::size_t lastElement(std::u16string_view path) noexcept {
  std::size_t const separator = path.rfind(u'/');
  return separator == std::u16string_view::npos ? 0 : separator + 1;
}

}  // namespace foundation::storage::vfs::iri_text
