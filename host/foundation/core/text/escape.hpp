#pragma once

#include <string>
#include <string_view>

#include "foundation/core/host_export.hpp"
#include "foundation/core/text/utf16.hpp"

/// Makes text safe to show: it must not control a terminal, break a line or reorder the text around it. A name may
/// contain any character, so every message and everything written to a terminal passes through here.
namespace foundation::core::text {

/// Whether the character (a unit, or a pair) must not be shown as it is: controls (U+0000 to U+001F, U+007F to U+009F),
/// the line and paragraph separators, the controls of bidirectional text (U+061C, U+200E, U+200F, U+202A to U+202E,
/// U+2066 to U+2069), and surrogates without their other half, which are bytes that aren't UTF-8.
KORVAN_HOST_EXPORT bool mustEscape(std::u16string_view character) noexcept;

/// Adds the text on one line. Each character that must be escaped becomes `\n`, `\t` or `\r`, or `\xNN` for each of its
/// bytes. A backslash of the text stays as it is, so the result is for reading, not for pasting.
KORVAN_HOST_EXPORT void appendOneLine(std::u16string& line, std::u16string_view text);

/// Calls `visit` with each character of the text, a unit or a pair.
template <class Visit>
void forEachCharacter(std::u16string_view text, Visit visit) {
  for (; !text.empty(); text.remove_prefix(characterLength(text))) visit(text.substr(0, characterLength(text)));
}

}  // namespace foundation::core::text
