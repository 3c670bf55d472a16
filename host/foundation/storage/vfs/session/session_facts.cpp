// What a session knows of entries themselves, links not followed.

#include "foundation/storage/vfs/session/busy.hpp"
#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {

std::optional<EntryFacts> SessionCache::facts(Provider& provider, AbsoluteIRI const& location) {
  Entry const entry = findEntry(location);
  if (entry.snapshot != nullptr && entry.index == EntryTable::npos) return std::nullopt;
  if (entry.snapshot != nullptr) {
    if (auto known = entry.snapshot->entries.facts(entry.index)) return known;
  }
  // A folder of a flat store is only a part of keys.
  bool const isFolder = entry.snapshot != nullptr ? entry.snapshot->entries.entryKind(entry.index) == EntryKind::folder
                                                  : find(keyOf(location), {}) != nullptr;
  if (isFolder && provider.servesSubtrees()) return EntryFacts{.kind = EntryKind::folder};
  return askFacts(provider, location);
}

std::optional<EntryKind> SessionCache::entryKind(Provider& provider, AbsoluteIRI const& location) {
  Entry const entry = findEntry(location);
  if (entry.snapshot != nullptr) {
    if (entry.index == EntryTable::npos) return std::nullopt;
    EntryKind const kind = entry.snapshot->entries.entryKind(entry.index);
    if (kind != EntryKind::unknown) return kind;
  }
  auto const known = askFacts(provider, location);
  if (!known) return std::nullopt;
  if (entry.snapshot != nullptr) entry.snapshot->entries.setEntryKind(entry.index, known->kind);
  return known->kind;
}

std::optional<EntryFacts> SessionCache::askFacts(Provider& provider, AbsoluteIRI const& location) {
  return failures_.attempt(FailureLog::Question::facts, location, FailureLog::Report::yes, [&] {
    Busy const busy(busy_);
    return stores_.ask(location, [&] { return provider.facts(location); });
  });
}

}  // namespace foundation::storage::vfs
