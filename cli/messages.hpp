#pragma once

#include <string_view>

/// Standard error: each message is one line, "kglob: MESSAGE [IDENTIFIER]", whatever characters it holds. Failures to
/// write are passed over, as there is nowhere to tell them.
namespace kglob {

/// Tells a message, with an error identifier where there is one. One system call.
void tell(std::u16string_view message, std::string_view identifier = {});

/// As above, for a message in UTF-8.
void tell(std::string_view message);

}  // namespace kglob
