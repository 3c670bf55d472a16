#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "foundation/storage/vfs/session/read_ahead.hpp"
#include "foundation/storage/vfs/session/subtree_scan.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace foundation::storage::vfs {

/// What a read session remembers: one reading for each folder, the failure of each that could not be read, and the
/// answers about locations whose folder wasn't read. Used by the session's thread alone, but for `activity`.
class ReadSession::Store {
 public:
  explicit Store(std::size_t memoryBound);

  /// The reading of the folder, which holds at least the entries whose names begin with `prefix`. Throws what reading
  /// it threw; where that was earlier in the session, as a plain `Exception`.
  std::shared_ptr<FolderReading> reading(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                                         std::string_view prefix);

  /// What stands at the location. The storage system is asked for the provider only where a reading doesn't tell.
  PathKind kind(StorageSystem& system, AbsoluteIRI const& location);

  /// Whether the entry at the location is, or may be, a link: true unless a reading says that it isn't.
  bool maybeLink(AbsoluteIRI const& location);

  Activity activity;
  std::vector<Exception> failedListings;

 private:
  struct Kept {
    std::shared_ptr<FolderReading> reading;
    Kept* next = nullptr;  // the one that was asked for after it the last time
  };
  Kept* find(std::u16string_view key, std::string_view prefix);
  Kept* findInTurn(std::u16string_view key, std::string_view prefix);
  std::shared_ptr<FolderReading> const& give(Kept& kept);

  // The entry at the location in a reading of the folder above it: null where that isn't read or the location ends in
  // no name; the index is `EntryTable::npos` where the folder has no such entry.
  struct Entry {
    FolderReading* reading;
    std::size_t index;
  };
  Entry findEntry(AbsoluteIRI const& location);
  std::size_t findNext(std::u16string_view key);

  struct Failure {
    Exception exception;
    bool told = false;  // in `failedListings`; not where the folder was only read ahead
  };
  void receive(DescentReader::Result const& ahead);
  void scan(Provider& provider, AbsoluteIRI const& location, std::string_view prefix);
  void tell(Failure& failure);
  Kept& remember(std::shared_ptr<FolderReading> reading);
  void makeRoom(std::size_t bytes);

  // The readings own their keys.
  std::unordered_multimap<std::u16string_view, Kept, KeyHash, KeyEqual> readings_;
  std::unordered_map<std::u16string, Failure, KeyHash, KeyEqual> failures_;
  std::unordered_map<std::u16string, PathKind> kinds_;
  std::optional<SubtreeScan> scan_;
  DescentReader reader_;
  std::size_t const memoryBound_;
  std::size_t memory_ = 0;

  Kept* lastGiven_ = nullptr;
  FolderReading* lastAsked_ = nullptr;  // the walk asks about many entries of one folder in turn
  std::string name_;                    // of the entry asked about; kept for its capacity
};

}  // namespace foundation::storage::vfs
