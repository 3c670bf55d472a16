#include "foundation/storage/vfs/detail/folder_snapshot.hpp"

#include "foundation/core/text/bytes.hpp"

namespace foundation::storage::vfs {

std::shared_ptr<FolderSnapshot> readFolder(Provider& provider, AbsoluteIRI const& location, std::string_view prefix) {
  auto snapshot = std::make_shared<FolderSnapshot>(location, std::string(prefix));
  snapshot->entries.reserveUsual();
  EntrySink sink(snapshot->entries);
  provider.list(location, prefix, sink);
  snapshot->entries.sort();
  snapshot->entries.shrink();
  return snapshot;
}

PathKind kindOfEntry(FolderSnapshot& snapshot, std::size_t index, Provider& provider) {
  if (auto const known = snapshot.entries.kind(index)) return *known;
  PathKind const kind =
      provider.kind(AbsoluteIRI(snapshot.location, core::text::fromBytes(snapshot.entries.name(index))));
  snapshot.entries.setKind(index, kind);
  return kind;
}

}  // namespace foundation::storage::vfs
