#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/detail/entry_table.hpp"
#include "foundation/storage/vfs/provider.hpp"

namespace foundation::storage::vfs {

/// What one reading of a folder found. Internal to the storage layer. Shared by listings and, where there is one, the
/// session; without a session it isn't changed once it is shared.
struct FolderReading {
  AbsoluteIRI location;
  std::string prefix;  ///< only entries whose names begin with these bytes were read for sure
  EntryTable entries;
  std::size_t lastFound = EntryTable::npos;  ///< the entry that the session was last asked about; it looks there first

  FolderReading(AbsoluteIRI where, std::string namePrefix)
      : location(std::move(where)), prefix(std::move(namePrefix)) {}
};

/// Reads the folder afresh: one listing of the provider, sorted. Throws as `Provider::list` does.
std::shared_ptr<FolderReading> readFolder(Provider& provider, AbsoluteIRI const& location, std::string_view prefix);

/// What stands at the entry: known from the reading, else asked of the provider and noted in the reading. At most two
/// requests.
PathKind kindOfEntry(FolderReading& reading, std::size_t index, Provider& provider);

}  // namespace foundation::storage::vfs
