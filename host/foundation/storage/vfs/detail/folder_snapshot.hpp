#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/detail/entry_table.hpp"
#include "foundation/storage/vfs/provider.hpp"
#include "foundation/storage/vfs/session/visibility.hpp"

namespace foundation::storage::vfs {

/// A folder's entries as one listing found them, sorted. Internal to the storage layer. Shared by listings and the
/// session, if any. Only the session's thread changes it; without a session it doesn't change once it is shared.
struct FolderSnapshot {
  AbsoluteIRI location;
  std::string prefix;  ///< complete for entries whose names begin with these bytes
  EntryTable entries;
  std::uint64_t device = Visibility::noDevice;  ///< the folder's, if the session stays on one device
  bool isClosed = false;                        ///< whether the session doesn't enter the folder, so that it is empty
  /// The entry that the session looked up last: the next one is likely its neighbour.
  std::size_t lastHit = EntryTable::npos;

  FolderSnapshot(AbsoluteIRI where, std::string namePrefix)
      : location(std::move(where)), prefix(std::move(namePrefix)) {}
};

/// Asks the provider for the folder's entries, and takes those that the session shows; all of them if `visibility` is
/// null. One listing, unless the session doesn't enter the folder; if it stays on one device, also one request for the
/// folder's identity. Throws as `Provider::list` and `Provider::identity` do. Shares no memory
/// with other calls, so a provider may list folders through the storage layer while it answers, on any thread.
std::shared_ptr<FolderSnapshot> readFolder(Provider& provider, AbsoluteIRI const& location, std::string_view prefix,
                                           Visibility const* visibility);

/// Makes a folder of all entries that were listed ready for use: sorted, without those that `visibility` hides.
void arrange(FolderSnapshot& snapshot, Visibility const* visibility);

/// The entry's kind: from the snapshot, or else from the provider, and then recorded in the snapshot. At most two
/// requests.
PathKind kindOfEntry(FolderSnapshot& snapshot, std::size_t index, Provider& provider);

}  // namespace foundation::storage::vfs
