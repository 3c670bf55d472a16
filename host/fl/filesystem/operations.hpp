#pragma once

#include "fl/filesystem/basic_path.hpp"
#include "fl/filesystem/fsys_exception.hpp"
#include "foundation/core/host_export.hpp"

/// The operations of the local path library that access the system. All throw `FsysExceptionBase`, with the path
/// concerned, if a system call fails. A text that has no byte form or contains U+0000 names nothing (ENOENT).
namespace fl::filesystem {

/// `path` if it is absolute, otherwise `path` below `base`. A relative `base` is resolved against the process's current
/// folder, and an empty one is that folder; either costs one system call. Otherwise a pure text operation: "." and ".."
/// are not removed.
KORVAN_HOST_EXPORT upath absolute(upath const& path, upath const& base);

/// `absolute`, with links, "." and ".." resolved (POSIX `realpath`). Throws if the path doesn't exist. One system call
/// for each element.
KORVAN_HOST_EXPORT upath canonical(upath const& path, upath const& base);

/// The relative path from `base` to `path`; "." if they are the same. Both are resolved against the process's current
/// folder, and links, "." and ".." are resolved in the part of each that exists, so that `base` joined with the result
/// names the same file or folder as `path`. One system call for each element.
KORVAN_HOST_EXPORT upath relative(upath const& path, upath const& base);

/// Whether both paths lead to the same file or folder (same device and inode). Throws if either doesn't exist.
/// Two system calls.
KORVAN_HOST_EXPORT bool equivalent(upath const& a, upath const& b);

}  // namespace fl::filesystem
