#include "foundation/storage/vfs/detail/folder_snapshot.hpp"

#include "foundation/core/text/bytes.hpp"

namespace foundation::storage::vfs {

std::shared_ptr<FolderReading> readFolder(Provider& provider, AbsoluteIRI const& location, std::string_view prefix) {
  thread_local EntryTable entries;  // its memory serves one folder after the other
  entries.clear();
  provider.list(location, prefix, entries);
  entries.sort();
  auto reading = std::make_shared<FolderReading>(location, std::string(prefix));
  reading->entries = entries.takeCompact();
  return reading;
}

PathKind kindOfEntry(FolderReading& reading, std::size_t index, Provider& provider) {
  if (auto const known = reading.entries.kind(index)) return *known;
  PathKind const kind =
      provider.kind(AbsoluteIRI(reading.location, core::text::fromBytes(reading.entries.name(index))));
  reading.entries.setKind(index, kind);
  return kind;
}

}  // namespace foundation::storage::vfs
