#pragma once

#include <cstdint>

namespace foundation::storage::vfs {

/// What exists at a location. A link counts as its target; a link that leads nowhere is a file.
enum class PathKind : std::uint32_t {
  isFile = 0,    ///< something that is not a folder
  isFolder = 1,  ///< a folder, or a link to one
  notFound = 2,  ///< nothing
};

}  // namespace foundation::storage::vfs
