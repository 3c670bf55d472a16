// What a session knows of entries themselves, links not followed.

#include "foundation/storage/vfs/session/busy.hpp"
#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {

std::optional<EntryFacts> SessionCache::facts(Provider& provider, AbsoluteIRI const& location) {
  Entry const entry = findEntry(location);
  if (entry.snapshot != nullptr) {
    if (entry.index == EntryTable::npos) return std::nullopt;
    if (auto known = entry.snapshot->entries.facts(entry.index)) return known;
  }
  // A folder of a flat store is only a part of keys.
  bool const hasFacts = !provider.servesSubtrees() || knownKind(entry, provider, location) != EntryKind::folder;
  return hasFacts ? askFacts(provider, location) : EntryFacts{.kind = EntryKind::folder};
}

std::optional<EntryKind> SessionCache::entryKind(Provider& provider, AbsoluteIRI const& location) {
  Entry const entry = findEntry(location);
  if (entry.snapshot != nullptr && entry.index == EntryTable::npos) return std::nullopt;
  EntryKind const kind = knownKind(entry, provider, location);
  if (kind != EntryKind::unknown) return kind;
  auto const known = askFacts(provider, location);
  if (!known) return std::nullopt;
  if (entry.snapshot != nullptr) entry.snapshot->entries.setEntryKind(entry.index, known->kind);
  return known->kind;
}

// The kind of an entry that exists, or of one in a folder that wasn't listed, as far as listings say it. A folder on a
// disk may have been listed through a link.
EntryKind SessionCache::knownKind(Entry entry, Provider& provider, AbsoluteIRI const& location) {
  if (entry.snapshot != nullptr) return entry.snapshot->entries.entryKind(entry.index);
  bool const isFolder = provider.servesSubtrees() && find(keyOf(location), {}) != nullptr;
  return isFolder ? EntryKind::folder : EntryKind::unknown;
}

std::optional<EntryFacts> SessionCache::askFacts(Provider& provider, AbsoluteIRI const& location) {
  return failures_.attempt(FailureLog::Question::facts, location, FailureLog::Report::yes, [&] {
    Busy const busy(busy_);
    return stores_.ask(location, [&] { return provider.facts(location); });
  });
}

}  // namespace foundation::storage::vfs
