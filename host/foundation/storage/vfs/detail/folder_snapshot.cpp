#include "foundation/storage/vfs/detail/folder_snapshot.hpp"

#include "foundation/core/text/bytes.hpp"

namespace foundation::storage::vfs {

std::shared_ptr<FolderSnapshot> readFolder(Provider& provider, AbsoluteIRI const& location, std::string_view prefix,
                                           Visibility const* visibility) {
  auto snapshot = std::make_shared<FolderSnapshot>(location, std::string(prefix));
  if (visibility != nullptr && visibility->closesFolders()) {
    snapshot->isClosed = visibility->isTooDeep(location);
    if (!snapshot->isClosed && visibility->staysOnDevice()) {
      if (auto const identity = provider.identity(location)) snapshot->device = identity->device;
      snapshot->isClosed = visibility->isElsewhere(snapshot->device);
    }
    if (snapshot->isClosed) return snapshot;
  }
  snapshot->entries.reserveUsual();
  EntrySink sink(snapshot->entries, visibility != nullptr && visibility->collectsFacts());
  provider.list(location, prefix, sink);
  arrange(*snapshot, visibility);
  return snapshot;
}

void arrange(FolderSnapshot& snapshot, Visibility const* visibility) {
  if (visibility != nullptr && visibility->hidesNames()) {
    snapshot.entries.removeIf([&](std::string_view name) { return visibility->hides(name); });
  }
  snapshot.entries.sort();
  snapshot.entries.shrink();
}

PathKind kindOfEntry(FolderSnapshot& snapshot, std::size_t index, Provider& provider) {
  if (auto const known = snapshot.entries.kind(index)) return *known;
  PathKind const kind =
      provider.kind(AbsoluteIRI(snapshot.location, core::text::fromBytes(snapshot.entries.name(index))));
  snapshot.entries.setKind(index, kind);
  return kind;
}

}  // namespace foundation::storage::vfs
