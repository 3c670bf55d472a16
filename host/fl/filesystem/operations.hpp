#pragma once

#include "fl/filesystem/basic_path.hpp"
#include "fl/filesystem/fsys_exception.hpp"
#include "foundation/core/host_export.hpp"

/// The operations of the local path library that look at the system. All throw `FsysExceptionBase`, with the path
/// concerned, when the system refuses; a text that no bytes stand for, or with U+0000 in it, names nothing (ENOENT).
namespace fl::filesystem {

/// `path` as an absolute path: itself when it is one, otherwise below `base`, which is itself taken from the process's
/// current folder when it is relative (one system call) and is that folder when it is empty. Pure text otherwise: "."
/// and ".." stay.
KORVAN_HOST_EXPORT upath absolute(upath const& path, upath const& base);

/// `absolute`, with links, "." and ".." resolved (POSIX `realpath`). Throws when nothing stands there. One system call
/// for each element.
KORVAN_HOST_EXPORT upath canonical(upath const& path, upath const& base);

/// The path that leads from `base` to `path`, "." for the same place. Both are taken from the process's current folder,
/// and links, "." and ".." resolved as far as something stands there, so that `base` joined with the result names what
/// `path` names. One system call for each element.
KORVAN_HOST_EXPORT upath relative(upath const& path, upath const& base);

/// Whether both paths lead to the same file or folder (same device and inode). Throws when nothing stands at one of
/// them. Two system calls.
KORVAN_HOST_EXPORT bool equivalent(upath const& a, upath const& b);

}  // namespace fl::filesystem
