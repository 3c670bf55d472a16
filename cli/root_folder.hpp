#pragma once

#include <string>

namespace kglob {

/// Whether the root folder, which must not be empty, can be shown not to be a folder: reports that it isn't one, or the
/// error that prevents finding out, and returns false. Costs a search.
bool checkRootFolder(std::string const& rootFolder);

}  // namespace kglob
