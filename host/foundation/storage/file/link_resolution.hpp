#pragma once

#include <string>

#include "foundation/storage/file/system_call.hpp"

namespace foundation::storage::file {

/// A descriptor, or the `errno` value that says why it couldn't be opened.
struct DescriptorOrError {
  Descriptor descriptor;
  int error = 0;
};

/// Resolves an absolute path step by step, each component relative to the folder opened before it, and returns a
/// descriptor opened with O_PATH. For paths with more links than the system follows in one call (40 on Linux), which a
/// search that descends through links can reach. The last component is followed only with `followLast`. The error is
/// ENOENT for a link that leads back to itself, as for any link that leads nowhere, and ELOOP after ten thousand links.
/// Costs about three system calls per component and two descriptors at a time, so call it only after the system itself
/// has failed with ELOOP.
DescriptorOrError resolveLinks(std::string const& path, bool followLast);

}  // namespace foundation::storage::file
