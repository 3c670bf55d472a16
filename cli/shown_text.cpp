#include "cli/shown_text.hpp"

#include "foundation/core/text/bytes.hpp"
#include "foundation/core/text/escape.hpp"

namespace kglob {
namespace {

using foundation::core::text::forEachCharacter;
using foundation::core::text::mustEscape;
using foundation::core::text::toBytesLossy;

void appendEscaped(std::string& bytes, std::u16string_view character) {
  switch (character[0]) {
    case u'\n':
      bytes += "\\n";
      return;
    case u'\t':
      bytes += "\\t";
      return;
    case u'\r':
      bytes += "\\r";
      return;
    default:
      for (char const byte : toBytesLossy(character)) {
        auto const value = static_cast<unsigned char>(byte);
        bytes += '\\';
        for (int const shift : {6, 3, 0}) bytes += static_cast<char>('0' + ((value >> shift) & 7));
      }
  }
}

}  // namespace

void appendForTerminal(std::string& bytes, std::u16string_view text) {
  bool quoted = text.starts_with(u"$'");
  forEachCharacter(text, [&](std::u16string_view character) { quoted = quoted || mustEscape(character); });
  if (!quoted) {
    bytes += toBytesLossy(text);
    return;
  }
  bytes += "$'";
  forEachCharacter(text, [&](std::u16string_view character) {
    if (mustEscape(character)) {
      appendEscaped(bytes, character);
      return;
    }
    if (character == u"\\" || character == u"'") bytes += '\\';
    bytes += toBytesLossy(character);
  });
  bytes += '\'';
}

}  // namespace kglob
