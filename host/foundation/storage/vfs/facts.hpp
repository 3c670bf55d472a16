#pragma once

#include <optional>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/entry_facts.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace foundation::storage::vfs {

/// What storage says about the entry at the IRI, links not followed; nothing if there is none. A final "/" is ignored.
/// No request when the thread's session collects facts and has listed the folder above, and the listing held them, as
/// those of stores do; otherwise one on a local disk, and at most two in a store. Throws `Exception` when the facts
/// can't be found out; in a session the location is then also among the failed listings.
KORVAN_HOST_EXPORT std::optional<EntryFacts> facts(AbsoluteIRI const& location, StorageSystemReference const& system);

/// Only the kind of that entry, never `unknown`. No request when the thread's session has listed the folder above and
/// that says what its entries are, as stores and most file systems do; otherwise as `facts`.
KORVAN_HOST_EXPORT std::optional<EntryKind> entryKind(AbsoluteIRI const& location,
                                                      StorageSystemReference const& system);

}  // namespace foundation::storage::vfs
