#pragma once

#include <string>

#include "foundation/storage/file/system_call.hpp"

namespace foundation::storage::file {

/// A descriptor opened with O_PATH, or the `errno` value that says why there is none.
struct Resolved {
  Descriptor descriptor;
  int error = 0;
};

/// Resolves an absolute path step by step, each component relative to the folder opened before, for paths with more links than the
/// system follows in one call (40 on Linux, then ELOOP): a search that descends through links comes by such paths. The last component
/// is followed only with `followLast`. The error is ENOENT for a link that leads back to itself, as it leads nowhere; ELOOP after ten
/// thousand links. About three system calls a component and two descriptors at a time, so it is only for when the system gives up.
Resolved resolveLinks(std::string const& path, bool followLast);

}  // namespace foundation::storage::file
