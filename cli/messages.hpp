#pragma once

#include <string_view>

/// Standard error: each message is one line, "kglob: MESSAGE [IDENTIFIER]", whatever characters it contains. Failures
/// to write are ignored, as there is nowhere to report them.
namespace kglob {

/// Writes a message, with an error identifier if there is one. One system call.
void report(std::u16string_view message, std::string_view identifier = {});

/// As above, for a message in UTF-8.
void report(std::string_view message);

/// Writes "out of memory"; needs no memory itself.
void reportOutOfMemory() noexcept;

}  // namespace kglob
