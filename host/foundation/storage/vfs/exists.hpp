#pragma once

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/path_kind.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace foundation::storage::vfs {

/// What exists at the IRI. No request when the thread's session has listed the folder above it and the entry is not a
/// link; otherwise at most two (on a local disk a `stat`, and an `lstat` where nothing was found). Throws `Exception`
/// when that can't be found out, never for absence.
KORVAN_HOST_EXPORT PathKind exists(AbsoluteIRI const& location, StorageSystemReference const& system);

}  // namespace foundation::storage::vfs
