#pragma once

#include "fl/filesystem/basic_path.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"

namespace korvan::io::internal {

/// The local path as an IRI, seen from `base`: expanded, then in the base's scheme where it is absolute, else below the
/// base. Throws what the storage layer throws.
foundation::storage::vfs::AbsoluteIRI resolveAgainstIRI(fl::filesystem::upath const& path,
                                                        foundation::storage::vfs::AbsoluteIRI const& base);

}  // namespace korvan::io::internal
