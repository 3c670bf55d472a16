#pragma once

#include <string>
#include <string_view>

/// Matches as a terminal shows them. A name may contain any character; foundation/core/text/escape.hpp says which of
/// them must not reach a terminal unescaped.
namespace kglob {

/// Adds a match as it is, or, if it contains a character that must be escaped, quoted as `$'...'`, which bash, zsh,
/// ksh93 and mksh read as the same name:
///
///     \\  \'       a backslash, a single quote
///     \n  \t  \r   these controls
///     \NNN         each byte of every other character that must be escaped, as three octal digits
///
/// Octal, because the shells disagree on where `\xNN` ends. A name that begins with `$'` is quoted too, so that the
/// output is unambiguous.
void appendForTerminal(std::string& bytes, std::u16string_view text);

}  // namespace kglob
