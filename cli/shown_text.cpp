#include "cli/shown_text.hpp"

#include <algorithm>

#include "foundation/core/text/bytes.hpp"

namespace kglob {
namespace {

using foundation::core::text::toBytesLossy;

bool isSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDFFF;
}

/// The length of the character at the start of the text: 2 for a pair of surrogates, else 1.
std::size_t characterLength(std::u16string_view text) {
  bool const pair = text.size() > 1 && text[0] >= 0xD800 && text[0] < 0xDC00 && text[1] >= 0xDC00 && text[1] <= 0xDFFF;
  return pair ? 2 : 1;
}

/// Whether a character must not reach a terminal as it is. A surrogate without its half stands for a byte that is no
/// UTF-8.
bool mustEscape(std::u16string_view character) {
  char16_t const unit = character[0];
  return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || (unit >= 0x2028 && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069) || (character.size() == 1 && isSurrogate(unit));
}

void appendEscaped(std::string& bytes, std::u16string_view character) {
  constexpr char digits[] = "0123456789ABCDEF";
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
  }
  for (char const byte : toBytesLossy(character)) {
    auto const value = static_cast<unsigned char>(byte);
    bytes += {'\\', 'x', digits[value >> 4], digits[value & 0xF]};
  }
}

/// Calls `visit` with each character of the text.
template <class Visit>
void forEachCharacter(std::u16string_view text, Visit visit) {
  for (; !text.empty(); text.remove_prefix(characterLength(text))) visit(text.substr(0, characterLength(text)));
}

void appendCharacter(std::string& bytes, std::u16string_view character) {
  if (mustEscape(character))
    appendEscaped(bytes, character);
  else
    bytes += toBytesLossy(character);
}

}  // namespace

void appendOneLine(std::string& bytes, std::u16string_view text) {
  forEachCharacter(text, [&](std::u16string_view character) { appendCharacter(bytes, character); });
}

void appendForTerminal(std::string& bytes, std::u16string_view text) {
  bool quoted = text.starts_with(u"$'");
  forEachCharacter(text, [&](std::u16string_view character) { quoted = quoted || mustEscape(character); });
  if (!quoted) {
    bytes += toBytesLossy(text);
    return;
  }
  bytes += "$'";
  forEachCharacter(text, [&](std::u16string_view character) {
    if (character == u"\\" || character == u"'") bytes += '\\';
    appendCharacter(bytes, character);
  });
  bytes += '\'';
}

}  // namespace kglob
