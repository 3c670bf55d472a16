#pragma once

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/path_kind.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace foundation::storage::vfs {

/// What stands at the IRI. No request when the thread's session has read the folder above it; at most two otherwise
/// (one `stat` on a local disk, an `lstat` more where nothing stands). Throws `Exception` when that can't be told,
/// never for absence.
KORVAN_HOST_EXPORT PathKind exists(AbsoluteIRI const& location, StorageSystemReference const& system);

}  // namespace foundation::storage::vfs
