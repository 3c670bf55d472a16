#include "foundation/core/text/escape.hpp"

#include "foundation/core/text/ascii.hpp"
#include "foundation/core/text/bytes.hpp"

namespace foundation::core::text {
namespace {

void appendEscaped(std::u16string& line, std::u16string_view character) {
  switch (character[0]) {
    case u'\n':
      line += u"\\n";
      return;
    case u'\t':
      line += u"\\t";
      return;
    case u'\r':
      line += u"\\r";
      return;
    default:
      for (char const byte : toBytesLossy(character)) {
        auto const value = static_cast<unsigned char>(byte);
        line +=
            {u'\\', u'x', static_cast<char16_t>(hexDigits[value >> 4]), static_cast<char16_t>(hexDigits[value & 0xF])};
      }
  }
}

}  // namespace

bool mustEscape(std::u16string_view character) noexcept {
  char16_t const unit = character[0];
  if (unit < 0x20) return true;
  if (unit < 0x7F) return false;
  return unit <= 0x9F || unit == 0x061C || unit == 0x200E || unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069) || (character.size() == 1 && isSurrogate(unit));
}

void appendOneLine(std::u16string& line, std::u16string_view text) {
  forEachCharacter(text, [&](std::u16string_view character) {
    if (mustEscape(character))
      appendEscaped(line, character);
    else
      line += character;
  });
}

}  // namespace foundation::core::text
