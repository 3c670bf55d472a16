#pragma once

#include <string>
#include <string_view>

/// Texts as they are shown to a person. A name may hold anything; what would steer a terminal or break a line is
/// written as
/// `\n`, `\t`, `\r`, or `\xNN` for each of its bytes: control characters (U+0000 to U+001F, U+007F to U+009F), line and
/// paragraph separators, the characters that reorder text (U+202A to U+202E, U+2066 to U+2069), and bytes that are no
/// UTF-8.
namespace kglob {

/// Adds `text` on one line. A backslash of the text stays as it is: for reading, not for pasting.
void appendOneLine(std::string& bytes, std::u16string_view text);

/// Adds a match as a terminal shows it: as it is, or, where it must be escaped, quoted as `$'...'`, which bash, zsh and
/// ksh read as the very same name. A name that begins with `$'` is quoted too, so that what is shown has one meaning.
void appendForTerminal(std::string& bytes, std::u16string_view text);

}  // namespace kglob
