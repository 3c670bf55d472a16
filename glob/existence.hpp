#pragma once

#include "foundation/storage/vfs/path_kind.hpp"
#include "korvan/io/path.hpp"

namespace korvan::io::internal {

using foundation::storage::vfs::PathKind;

/// What exists at `absolute(path, base)`; `notFound` also if the storage layer reports absence as an error. Throws its
/// other errors. One existence test.
PathKind pathKind(Path const& path, Path const& base);

/// Whether the kind is that of a file or a folder.
inline bool exists(PathKind kind) noexcept {
  return kind == PathKind::isFile || kind == PathKind::isFolder;
}

}  // namespace korvan::io::internal
