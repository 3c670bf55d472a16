#pragma once

#include <string>

#include "cli/search_library.hpp"
#include "quindarel/interpreter/array_ptr.hpp"

namespace kglob {

/// Where and how the patterns are searched.
struct Scope {
  std::u16string rootFolder;  ///< empty: the current folder
  bool dotFiles = false;
};

/// Calls the builtin with the pattern and the options that differ from its defaults, as an interpreter would, and
/// returns its result: a string array of one column. Exceptions of the builtin pass through.
matrix::detail::ArrayPtr search(SearchLibrary const& library, std::u16string const& pattern, Scope const& scope);

}  // namespace kglob
