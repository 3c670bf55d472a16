#pragma once

#include <string>

#include "quindarel/interpreter/array_ptr.hpp"

namespace korvan::io::internal {

/// A copy of the text of an argument: a character row vector (1-by-n), a 0-by-0 character array, or a string scalar.
/// Throws `foundation::core::except::Exception` of `KORVAN::string::MissingNotSupported` for a missing string scalar,
/// and of `KORVAN::string::MustBeStringScalarOrCharacterVector` for everything else, including null.
std::u16string getTextArgument(vxArray_tag const* argument);

/// Whether two texts are equal, ignoring case as far as `tolower` does in the process's current locale, code
/// unit by code unit. So in a locale in which `tolower` doesn't map "I" to "i" (Turkish, tr_TR),
/// "INCLUDEDOTFILES" and "IncludeDotFiles" differ.
bool equalsIgnoreCase(std::u16string const& a, std::u16string const& b);

}  // namespace korvan::io::internal
