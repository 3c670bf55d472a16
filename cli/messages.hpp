#pragma once

#include <string_view>

#include "kglob.h"

/// Standard error: each message is one line, "kglob: MESSAGE [IDENTIFIER]", whatever characters it contains. Failures
/// to write are ignored, as there is nowhere to report them.
namespace kglob {

/// Writes a message in UTF-8, with an error identifier if there is one. One system call.
void report(std::string_view message, std::string_view identifier = {});

/// Writes the error's message and identifier, and the reason if the message doesn't contain it.
void report(kglob_failure const& error);

/// Writes "out of memory"; needs no memory itself.
void reportOutOfMemory() noexcept;

}  // namespace kglob
