#pragma once

#include "fl/filesystem/basic_path.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"

namespace korvan::io::internal {

/// The local path, expanded and resolved against `base`: in the base's scheme if it is absolute, otherwise below the
/// base. Throws what the storage layer throws.
foundation::storage::vfs::AbsoluteIRI resolveAgainstIRI(fl::filesystem::upath const& path,
                                                        foundation::storage::vfs::AbsoluteIRI const& base);

}  // namespace korvan::io::internal
