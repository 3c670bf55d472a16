#pragma once

#include <string>

namespace kglob {

/// The search library that belongs to this program: beside it, or else in the library folder that it was installed
/// with. Throws `LibraryError` when there is none.
std::string findLibraryFile();

}  // namespace kglob
