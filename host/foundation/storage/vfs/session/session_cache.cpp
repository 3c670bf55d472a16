#include "foundation/storage/vfs/session/session_cache.hpp"

#include <algorithm>
#include <utility>

#include "foundation/storage/vfs/detail/iri_text.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"

namespace foundation::storage::vfs {
namespace {

// Whether the written form of an IRI's element shows this name character for character, ASCII and without a
// percent-encoding.
bool writtenPlainly(std::string_view name, std::u16string_view written) {
  return name.size() == written.size() &&
         std::equal(name.begin(), name.end(), written.begin(), [](char byte, char16_t unit) {
           return unit < 0x80 && unit != u'%' && unit == static_cast<unsigned char>(byte);
         });
}

// Whether it is a reading of the folder that holds all entries whose names begin with the prefix.
bool holds(FolderReading const& reading, std::u16string_view key, std::string_view prefix) {
  return KeyEqual()(keyOf(reading.location), key) && prefix.starts_with(reading.prefix);
}

std::size_t memoryOf(FolderReading const& reading) {
  constexpr std::size_t perReading =
      sizeof(FolderReading) + 96;  // with the node and the bucket of the table and the counts of the shared pointer
  return perReading + reading.entries.memory() + reading.location.toString().capacity() * sizeof(char16_t);
}

}  // namespace

ReadSession::Store::Store(std::size_t memoryBound)
    : reader_([this](DescentReader::Result const& ahead) { receive(ahead); }), memoryBound_(memoryBound) {}

ReadSession::Store::Kept* ReadSession::Store::find(std::u16string_view key, std::string_view prefix) {
  if (lastGiven_ != nullptr && holds(*lastGiven_->reading, key, prefix)) return lastGiven_;
  auto const [first, last] = readings_.equal_range(key);
  for (auto it = first; it != last; ++it) {
    if (prefix.starts_with(it->second.reading->prefix)) return &it->second;
  }
  return nullptr;
}

// A search lists the folders below one again and again, always in the same order: a guess saves the walk through cold
// memory that a look into the table is.
ReadSession::Store::Kept* ReadSession::Store::findInTurn(std::u16string_view key, std::string_view prefix) {
  Kept* const guess = lastGiven_ == nullptr ? nullptr : lastGiven_->next;
  bool const right = guess != nullptr && holds(*guess->reading, key, prefix);
  return right ? guess : find(key, prefix);
}

std::shared_ptr<FolderReading> ReadSession::Store::reading(std::shared_ptr<Provider> const& provider,
                                                           AbsoluteIRI const& location, std::string_view prefix) {
  std::u16string_view const key = keyOf(location);
  bool const flat = provider->servesSubtrees();
  if (!flat) prefix = {};  // the provider reads whole folders anyway, so remember them as such
  if (Kept* const found = findInTurn(key, prefix)) return give(*found);
  if (auto const failure = failures_.find(key); failure != failures_.end()) {
    tell(failure->second);
    throw Exception(failure->second.exception);
  }
  try {
    if (flat) {
      scan(*provider, location, prefix);
      if (Kept* const found = find(key, prefix)) return give(*found);
    }
    return give(remember(flat ? readFolder(*provider, location, prefix) : reader_.read(provider, location)));
  } catch (Exception const& failure) {
    tell(failures_.try_emplace(std::u16string(key), Failure{failure}).first->second);
    throw;
  }
}

std::shared_ptr<FolderReading> const& ReadSession::Store::give(Kept& kept) {
  if (lastGiven_ != nullptr) lastGiven_->next = &kept;
  lastGiven_ = &kept;
  return kept.reading;
}

// A folder that was read ahead and may be asked for later or never.
void ReadSession::Store::receive(DescentReader::Result const& ahead) {
  std::u16string_view const key = keyOf(ahead.reading->location);
  if (!ahead.failure) {
    if (find(key, {}) == nullptr) remember(ahead.reading);
    return;
  }
  try {
    std::rethrow_exception(ahead.failure);
  } catch (Exception const& failure) {
    failures_.try_emplace(std::u16string(key), Failure{failure});
  }
}

void ReadSession::Store::tell(Failure& failure) {
  bool const asNews = !std::exchange(failure.told, true);
  if (asNews && failure.exception.getErrorCode() != static_cast<int>(ErrorCode::notFound)) {
    failedListings.push_back(failure.exception);
  }
}

PathKind ReadSession::Store::kind(StorageSystem& system, AbsoluteIRI const& location) {
  Entry entry = findEntry(location);
  if (entry.reading == nullptr) {
    if (find(keyOf(location), {}) != nullptr) return PathKind::isFolder;
    if (auto const known = kinds_.find(location.toString()); known != kinds_.end()) return known->second;
    std::shared_ptr<Provider> const provider = system.provider(location.scheme());
    AbsoluteIRI const above = location.getParent();
    if (scan_ && location.hasParent() && scan_->reaches(above, {}) && scan_->worthAPage()) {
      scan(*provider, above, {});
      entry = findEntry(location);
    }
    if (entry.reading == nullptr) {
      PathKind const kind = provider->kind(location);
      makeRoom(location.toString().size() * sizeof(char16_t));
      kinds_.emplace(location.toString(), kind);
      return kind;
    }
  }
  if (entry.index == EntryTable::npos) return PathKind::notFound;
  auto const known = entry.reading->entries.kind(entry.index);
  PathKind const kind = known ? *known : kindOfEntry(*entry.reading, entry.index, *system.provider(location.scheme()));
  bool const asksForFolder = location.toString().back() == u'/';
  return asksForFolder && kind != PathKind::isFolder ? PathKind::notFound : kind;
}

bool ReadSession::Store::maybeLink(AbsoluteIRI const& location) {
  Entry const entry = findEntry(location);
  return entry.reading == nullptr || entry.index == EntryTable::npos || entry.reading->entries.maybeLink(entry.index);
}

ReadSession::Store::Entry ReadSession::Store::findEntry(AbsoluteIRI const& location) {
  constexpr Entry unknown{nullptr, EntryTable::npos};
  std::u16string_view const key = keyOf(location);
  if (std::size_t const index = findNext(key); index != EntryTable::npos) return {lastAsked_, index};
  std::size_t const nameStart = iri_text::lastElement(key);
  if (nameStart + location.encodedPath().size() <= location.toString().size())
    return unknown;  // no element in the path
  std::u16string_view const writtenName = key.substr(nameStart);
  std::u16string_view const folderKey = key.substr(0, nameStart - 1);
  if (lastAsked_ == nullptr || !KeyEqual()(keyOf(lastAsked_->location), folderKey)) {
    Kept* const whole = find(folderKey, {});
    lastAsked_ = whole == nullptr ? nullptr : whole->reading.get();
  }
  name_.clear();
  iri_text::appendDecodedBytes(name_, writtenName);
  if (name_.empty() || name_ == "." || name_ == "..") return unknown;
  if (lastAsked_ == nullptr || !name_.starts_with(lastAsked_->prefix)) {
    Kept* const covering = find(folderKey, name_);
    if (covering == nullptr) return unknown;
    lastAsked_ = covering->reading.get();
  }
  std::size_t const index = lastAsked_->entries.find(name_);
  if (index != EntryTable::npos) lastAsked_->lastFound = index;
  return {lastAsked_, index};
}

// The walk asks about the entries of a folder in listing order, twice about a sub-folder, and most names are written as
// they are: then nothing needs to be taken apart, decoded or searched.
std::size_t ReadSession::Store::findNext(std::u16string_view key) {
  if (lastAsked_ == nullptr) return EntryTable::npos;
  std::u16string_view const folderKey = keyOf(lastAsked_->location);
  bool const below = key.size() > folderKey.size() && key[folderKey.size()] == u'/' &&
                     KeyEqual()(key.substr(0, folderKey.size()), folderKey);
  if (!below) return EntryTable::npos;
  std::u16string_view const writtenName = key.substr(folderKey.size() + 1);
  for (std::size_t const likely : {lastAsked_->lastFound + 1, lastAsked_->lastFound}) {
    if (likely < lastAsked_->entries.size() && writtenPlainly(lastAsked_->entries.name(likely), writtenName)) {
      return lastAsked_->lastFound = likely;
    }
  }
  return EntryTable::npos;
}

void ReadSession::Store::scan(Provider& provider, AbsoluteIRI const& location, std::string_view prefix) {
  if (!scan_ || !scan_->reaches(location, prefix)) scan_.emplace(location, std::string(prefix));
  scan_->advance(provider, location, [this](std::shared_ptr<FolderReading> reading) {
    if (find(keyOf(reading->location), reading->prefix) == nullptr) remember(std::move(reading));
  });
}

ReadSession::Store::Kept& ReadSession::Store::remember(std::shared_ptr<FolderReading> reading) {
  activity.folders.fetch_add(1, std::memory_order_relaxed);
  activity.entries.fetch_add(reading->entries.size(), std::memory_order_relaxed);
  makeRoom(memoryOf(*reading));
  std::u16string_view const key = keyOf(reading->location);
  return readings_.emplace(key, Kept{std::move(reading)})->second;
}

void ReadSession::Store::makeRoom(std::size_t bytes) {
  if (memory_ + bytes > memoryBound_) {
    readings_.clear();
    kinds_.clear();
    memory_ = 0;
    lastAsked_ = nullptr;
    lastGiven_ = nullptr;
  }
  memory_ += bytes;
}

}  // namespace foundation::storage::vfs
