// The cache predicts twice, because the folder interface says nothing about where a search goes next: folders and
// entries are requested one after the other. A search lists the folders below a folder again and again in the same
// order, so each cached folder remembers the one requested after it; and it looks up the entries of a folder in listing
// order, so the neighbour of the last entry is tried first. A wrong prediction costs one comparison, a right one saves
// a lookup in cold memory.

#include "foundation/storage/vfs/session/session_cache.hpp"

#include <algorithm>
#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/iri_text.hpp"
#include "foundation/storage/vfs/session/busy.hpp"

namespace foundation::storage::vfs {
namespace {

// The most memory for what was read ahead and not yet requested.
constexpr std::size_t memoryAhead = std::size_t{4} << 20;

// More than the wildcards of nearly all patterns.
constexpr std::size_t mostFilters = 8;

// Whether the written form of an IRI's element is this name character for character: ASCII without a percent-encoding.
bool isWrittenAs(std::string_view name, std::u16string_view written) {
  return name.size() == written.size() &&
         std::equal(name.begin(), name.end(), written.begin(), [](char byte, char16_t unit) {
           return unit < 0x80 && unit != u'%' && unit == static_cast<unsigned char>(byte);
         });
}

// Whether it is a snapshot of the folder, complete for the entries whose names begin with the prefix.
bool covers(FolderSnapshot const& snapshot, std::u16string_view key, std::string_view prefix) {
  return KeyEqual()(keyOf(snapshot.location), key) && prefix.starts_with(snapshot.prefix);
}

bool isRefusal(Exception const& failure) {
  return failure.getErrorCode() == static_cast<int>(ErrorCode::permissionDenied);
}

std::size_t memoryOf(FolderSnapshot const& snapshot) {
  // With the table's node and bucket and the shared pointer's counts.
  constexpr std::size_t perSnapshot = sizeof(FolderSnapshot) + 96;
  return perSnapshot + snapshot.entries.memory() + snapshot.location.toString().capacity() * sizeof(char16_t);
}

}  // namespace

SessionCache::SessionCache(std::size_t memoryBound, SessionPolicy const& policy)
    : visibility_(policy),
      limit_(policy),
      memoryBound_(memoryBound - std::min(memoryBound / 4, memoryAhead)),
      readAhead_(*this, visibility_, activity, limit_, std::min(memoryBound / 4, memoryAhead)) {}

std::shared_ptr<NameFilter const> const& SessionCache::filter(std::u16string const& text) {
  auto const known =
      std::find_if(filters_.begin(), filters_.end(), [&](auto const& filter) { return filter.first == text; });
  if (known != filters_.end()) return known->second;
  if (filters_.size() == mostFilters) filters_.clear();
  return filters_.emplace_back(text, std::make_shared<NameFilter const>(text)).second;
}

SessionCache::CachedFolder* SessionCache::find(std::u16string_view key, std::string_view prefix) {
  if (lastRequested_ != nullptr && covers(*lastRequested_->snapshot, key, prefix)) return lastRequested_;
  auto const [first, last] = folders_.equal_range(key);
  for (auto it = first; it != last; ++it) {
    if (prefix.starts_with(it->second.snapshot->prefix)) return &it->second;
  }
  return nullptr;
}

SessionCache::CachedFolder* SessionCache::findPredicted(std::u16string_view key, std::string_view prefix) {
  CachedFolder* const prediction = lastRequested_ == nullptr ? nullptr : lastRequested_->next;
  bool const isHit = prediction != nullptr && covers(*prediction->snapshot, key, prefix);
  return isHit ? prediction : find(key, prefix);
}

std::shared_ptr<FolderSnapshot> const& SessionCache::noteRequested(CachedFolder& folder) {
  if (lastRequested_ != nullptr && lastRequested_ != &folder) lastRequested_->next = &folder;
  lastRequested_ = &folder;
  return folder.snapshot;
}

std::shared_ptr<FolderSnapshot> SessionCache::snapshot(std::shared_ptr<Provider> const& provider,
                                                       AbsoluteIRI const& location, std::string_view prefix) {
  std::u16string_view const key = keyOf(location);
  if (visibility_.awaitsStart()) noteStart(*provider, location);
  // Where the provider reads whole folders anyway, cache them as such.
  if (!provider->servesSubtrees() || location.isFolderOfAuthorities()) prefix = {};
  if (CachedFolder* const cached = findPredicted(key, prefix)) {
    enter(*cached, *provider);
    return noteRequested(*cached);
  }
  return failures_.attempt(FailureLog::Question::entries, location, FailureLog::Report::yes,
                           [&] { return read(provider, location, prefix); });
}

std::shared_ptr<FolderSnapshot> SessionCache::read(std::shared_ptr<Provider> const& provider,
                                                   AbsoluteIRI const& location, std::string_view prefix) {
  Busy const busy(busy_);
  if (!provider->servesSubtrees()) {
    Answer answer = readAhead_.request(FailureLog::Question::entries, provider, location);
    if (answer.failure) std::rethrow_exception(answer.failure);
    if (isOutdated(*answer.snapshot)) answer.snapshot = readFolder(*provider, location, {}, &visibility_);
    CachedFolder& added = add(std::move(answer.snapshot));
    added.search = search_;
    return noteRequested(added);
  }
  CachedFolder& added = add(readFromStore(provider, location, prefix));
  enter(added, *provider);
  return noteRequested(added);
}

void SessionCache::addKind(AbsoluteIRI const& location, PathKind kind) {
  makeRoom(location.toString().size() * sizeof(char16_t));
  kinds_.emplace(location.toString(), kind);
}

PathKind SessionCache::kind(StorageSystem& system, AbsoluteIRI const& location) {
  Entry const entry = findEntry(location);
  std::optional<PathKind> kind;
  if (entry.snapshot != nullptr) {
    kind = entry.index == EntryTable::npos ? PathKind::notFound : entry.snapshot->entries.kind(entry.index);
  } else if (hides(system, location)) {
    kind = PathKind::notFound;
  } else if (find(keyOf(location), {}) != nullptr) {
    kind = PathKind::isFolder;
  } else if (auto const known = kinds_.find(location.toString()); known != kinds_.end()) {
    kind = known->second;
  }
  if (!kind) {
    // A location in a folder that wasn't listed was named by the caller, who sees the exception. After an eviction it
    // is no longer known what was listed.
    bool const mayBeListed = entry.snapshot != nullptr || (hasEvicted_ && !reportsRefusal(location));
    try {
      kind = failures_.attempt(FailureLog::Question::kind, location,
                               mayBeListed ? FailureLog::Report::yes : FailureLog::Report::no,
                               [&] { return askKind(system, location, entry); });
    } catch (Exception const& failure) {
      if (!isRefusal(failure) || !reportsRefusal(location)) throw;
      kind = passOver(entry, location, failure);
    }
  }
  bool const asksForFolder = location.toString().ends_with(u'/');
  return asksForFolder && kind != PathKind::isFolder ? PathKind::notFound : *kind;
}

PathKind SessionCache::askKind(StorageSystem& system, AbsoluteIRI const& location, Entry entry) {
  std::shared_ptr<Provider> const provider = system.provider(location.scheme());
  Busy const busy(busy_);
  AbsoluteIRI const above = location.getParent();
  if (entry.snapshot == nullptr && scan_ && location.hasParent() && scan_->reaches(above, {})) {
    scan_->readForLookup(provider, above, [this](auto const& snapshot) { addScanned(snapshot); });
    entry = findEntry(location);
  }
  if (entry.snapshot != nullptr) {
    return entry.index == EntryTable::npos ? PathKind::notFound : kindOfEntry(*entry.snapshot, entry.index, *provider);
  }
  PathKind const kind =
      provider->servesSubtrees() ? askStore(provider, location) : lookUp(provider, location, SIZE_MAX);
  addKind(location, kind);
  return kind;
}

PathKind SessionCache::lookUp(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                              std::size_t mostAhead) {
  Answer const answer = readAhead_.request(FailureLog::Question::kind, provider, location, mostAhead);
  if (answer.failure) std::rethrow_exception(answer.failure);
  return answer.kind;
}

PathKind SessionCache::kind(FolderSnapshot& snapshot, std::size_t index, Provider& provider) {
  if (auto const known = snapshot.entries.kind(index)) return *known;
  AbsoluteIRI const location(snapshot.location, core::text::fromBytes(snapshot.entries.name(index)));
  return failures_.attempt(FailureLog::Question::kind, location, FailureLog::Report::yes, [&] {
    Busy const busy(busy_);
    return kindOfEntry(snapshot, index, provider);
  });
}

std::optional<FolderIdentity> SessionCache::identity(Provider& provider, AbsoluteIRI const& folder) {
  std::u16string_view const key = keyOf(folder);
  if (auto const known = identities_.find(key); known != identities_.end()) return known->second;
  auto const identity = failures_.attempt(FailureLog::Question::identity, folder, FailureLog::Report::yes, [&] {
    Busy const busy(busy_);
    return provider.identity(folder);
  });
  makeRoom(key.size() * sizeof(char16_t) + sizeof identity);
  return identities_.emplace(key, identity).first->second;
}

bool SessionCache::maybeLink(AbsoluteIRI const& location) {
  Entry const entry = findEntry(location);
  return entry.snapshot == nullptr || entry.index == EntryTable::npos || entry.snapshot->entries.maybeLink(entry.index);
}

SessionCache::Entry SessionCache::findEntry(AbsoluteIRI const& location) {
  constexpr Entry unknown{nullptr, EntryTable::npos};
  std::u16string_view const key = keyOf(location);
  if (std::size_t const index = findNeighbour(key); index != EntryTable::npos) return {lastLookedIn_, index};
  std::size_t const nameStart = iri_text::lastElement(key);
  bool const isRoot = nameStart + location.encodedPath().size() <= location.toString().size();
  if (isRoot && location.authority().empty()) return unknown;
  std::u16string_view const writtenName = key.substr(nameStart);
  std::u16string_view const folderKey = key.substr(0, nameStart - 1);
  if (lastLookedIn_ == nullptr || !KeyEqual()(keyOf(lastLookedIn_->location), folderKey)) {
    CachedFolder* const whole = find(folderKey, {});
    lastLookedIn_ = whole == nullptr ? nullptr : whole->snapshot.get();
  }
  name_.clear();
  iri_text::appendDecodedBytes(name_, writtenName);
  if (name_.empty() || name_ == "." || name_ == "..") return unknown;
  if (lastLookedIn_ == nullptr || !name_.starts_with(lastLookedIn_->prefix)) {
    CachedFolder* const covering = find(folderKey, name_);
    if (covering == nullptr) return unknown;
    lastLookedIn_ = covering->snapshot.get();
  }
  std::size_t const index = lastLookedIn_->entries.find(name_);
  if (index != EntryTable::npos) lastLookedIn_->lastHit = index;
  // The start of a search may have a name that an earlier search left out.
  if (index == EntryTable::npos && visibility_.hides(name_) && !visibility_.isBelowStart(location)) return unknown;
  // An account's list lacks the buckets of others, which may be named, but aren't entries of a search that began there.
  if (index == EntryTable::npos && isRoot && !isSearchedFrom(lastLookedIn_->location)) return unknown;
  return {lastLookedIn_, index};
}

// Tries the last entry looked up and the one after it: the walk looks up subfolders twice. Most names are written as
// they are, and then nothing needs to be split, decoded or searched.
std::size_t SessionCache::findNeighbour(std::u16string_view key) {
  if (lastLookedIn_ == nullptr) return EntryTable::npos;
  std::u16string_view const folderKey = keyOf(lastLookedIn_->location);
  bool const below = key.size() > folderKey.size() && key[folderKey.size()] == u'/' &&
                     KeyEqual()(key.substr(0, folderKey.size()), folderKey);
  if (!below) return EntryTable::npos;
  std::u16string_view const writtenName = key.substr(folderKey.size() + 1);
  for (std::size_t const likely : {lastLookedIn_->lastHit + 1, lastLookedIn_->lastHit}) {
    if (likely < lastLookedIn_->entries.size() && isWrittenAs(lastLookedIn_->entries.name(likely), writtenName)) {
      return lastLookedIn_->lastHit = likely;
    }
  }
  return EntryTable::npos;
}

SessionCache::CachedFolder& SessionCache::add(std::shared_ptr<FolderSnapshot> snapshot) {
  if (!snapshot->isClosed) activity.folders.fetch_add(1, std::memory_order_relaxed);
  activity.entries.fetch_add(snapshot->entries.size(), std::memory_order_relaxed);
  makeRoom(memoryOf(*snapshot));
  std::u16string_view const key = keyOf(snapshot->location);
  return folders_.emplace(key, CachedFolder{std::move(snapshot)})->second;
}

void SessionCache::makeRoom(std::size_t bytes) {
  if (memory_ + bytes > memoryBound_) evict();
  memory_ += bytes;
}

// Evicts all folders but the one requested last and those above it, of which a descent goes on asking. A search seldom
// comes back to the others soon, and an order of eviction would cost time on every hit.
void SessionCache::evict() {
  std::u16string_view const last =
      lastRequested_ == nullptr ? std::u16string_view() : keyOf(lastRequested_->snapshot->location);
  memory_ = 0;
  for (auto folder = folders_.begin(); folder != folders_.end();) {
    std::u16string_view const key = folder->first;
    bool const isOnTheWay = last.starts_with(key) && (last.size() == key.size() || last[key.size()] == u'/');
    folder->second.next = nullptr;
    memory_ += isOnTheWay ? memoryOf(*folder->second.snapshot) : 0;
    folder = isOnTheWay ? std::next(folder) : folders_.erase(folder);
  }
  kinds_.clear();
  identities_.clear();
  lastLookedIn_ = nullptr;
  hasEvicted_ = true;
}

void SessionCache::forget() noexcept {
  folders_.clear();
  kinds_.clear();
  identities_.clear();
  memory_ = 0;
  lastLookedIn_ = nullptr;
  lastRequested_ = nullptr;
}

}  // namespace foundation::storage::vfs
