#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"
#include "foundation/storage/vfs/detail/name_filter.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "foundation/storage/vfs/session/answered_stores.hpp"
#include "foundation/storage/vfs/session/failure_log.hpp"
#include "foundation/storage/vfs/session/read_ahead.hpp"
#include "foundation/storage/vfs/session/read_limit.hpp"
#include "foundation/storage/vfs/session/search_states.hpp"
#include "foundation/storage/vfs/session/subtree_scan.hpp"
#include "foundation/storage/vfs/session/visibility.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace foundation::storage::vfs {

/// What a read session remembers: one snapshot of each folder, the identities of folders, the failures, and the kinds
/// of locations whose folder wasn't listed. Only the session's thread uses it, except for `activity`. Not reentrant
/// while it calls a provider; see `isBusy`. Each operation that calls a provider throws what that throws, and remembers
/// and reports it (see FailureLog): a search skips what it can't look up, and only the report shows that its result is
/// incomplete.
class SessionCache final : private ReadAhead::Cache {
 public:
  SessionCache(std::size_t memoryBound, SessionPolicy const& policy);

  /// As `ReadSession::announce`.
  std::shared_ptr<void const> announce(SearchOutline const& outline);

  /// The snapshot of the folder, complete at least for the entries whose names begin with `prefix`: from the cache, or
  /// read now.
  std::shared_ptr<FolderSnapshot> snapshot(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                                           std::string_view prefix);

  /// What exists at the location. The storage system is asked for the provider only if the cache has no answer.
  PathKind kind(StorageSystem& system, AbsoluteIRI const& location);

  /// The kind of an entry of a snapshot that this cache returned: as `kindOfEntry`.
  PathKind kind(FolderSnapshot& snapshot, std::size_t index, Provider& provider);

  /// The folder's identity, as `Provider::identity`.
  std::optional<FolderIdentity> identity(Provider& provider, AbsoluteIRI const& folder);

  /// What storage says about the entry at the location, links not followed; see the functions of these names.
  std::optional<EntryFacts> facts(Provider& provider, AbsoluteIRI const& location);
  std::optional<EntryKind> entryKind(Provider& provider, AbsoluteIRI const& location);

  /// Whether the entry at the location is, or may be, a link: true unless a snapshot says that it isn't.
  bool maybeLink(AbsoluteIRI const& location);

  /// The filter of the text, made once, as a search lists thousands of folders with few filters. Valid until the next
  /// call.
  std::shared_ptr<NameFilter const> const& filter(std::u16string const& text);

  /// Whether a provider is being called on this thread.
  bool isBusy() const noexcept { return busy_; }

  FailureLog const& failures() const noexcept { return failures_; }

  /// See `ReadSession::notes`.
  std::vector<Exception> const& notes() const noexcept { return notes_; }

  Visibility const& visibility() const noexcept { return visibility_; }

  /// The next folder that is listed is the start of another search.
  void beginSearch() noexcept { visibility_.forgetStart(); }

  Activity activity;

 private:
  struct CachedFolder {
    std::shared_ptr<FolderSnapshot> snapshot;
    std::size_t search = 0;        // the search, by number, that has entered it
    CachedFolder* next = nullptr;  // another, requested after it last time, predicted for the next time
  };
  CachedFolder* find(std::u16string_view key, std::string_view prefix);
  CachedFolder* findPredicted(std::u16string_view key, std::string_view prefix);
  std::shared_ptr<FolderSnapshot> const& noteRequested(CachedFolder& folder);

  // The entry at a location, in a snapshot of the folder above it. The snapshot is null if that folder isn't cached or
  // the location doesn't end in a name; the index is `EntryTable::npos` if the folder has no such entry.
  struct Entry {
    FolderSnapshot* snapshot;
    std::size_t index;
  };
  Entry findEntry(AbsoluteIRI const& location);
  bool isSearchedFrom(AbsoluteIRI const& root) const;
  std::size_t findNeighbour(std::u16string_view key);

  std::shared_ptr<FolderSnapshot> read(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                                       std::string_view prefix);
  PathKind askKind(StorageSystem& system, AbsoluteIRI const& location, Entry entry);
  void addUnrequested(Answer const& answer) override;
  std::unordered_set<std::size_t> knownFolders() const override;
  void addKind(AbsoluteIRI const& location, PathKind kind);
  PathKind lookUp(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location, std::size_t mostAhead);
  std::shared_ptr<FolderSnapshot> readFromStore(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                                                std::string_view prefix);
  PathKind askStore(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location);
  SubtreeScan& scanFor(AbsoluteIRI const& location, std::string_view prefix);
  void addScanned(std::shared_ptr<FolderSnapshot> snapshot);
  void noteOrderOf(AbsoluteIRI const& location);
  EntryKind knownKind(Entry entry, Provider& provider, AbsoluteIRI const& location);
  std::optional<EntryFacts> askFacts(Provider& provider, AbsoluteIRI const& location);
  void noteStart(Provider& provider, AbsoluteIRI const& folder);
  bool hides(StorageSystem& system, AbsoluteIRI const& location);
  std::uint64_t deviceOf(Provider& provider, AbsoluteIRI const& folder);
  bool reportsRefusal(AbsoluteIRI const& location) const;
  PathKind passOver(Entry entry, AbsoluteIRI const& location, Exception const& failure);
  bool isOutdated(FolderSnapshot const& snapshot) const noexcept;
  CachedFolder& add(std::shared_ptr<FolderSnapshot> snapshot);
  void enter(CachedFolder& folder, Provider const& provider);
  void makeRoom(std::size_t bytes);
  void evict();
  void forget() noexcept;

  Visibility visibility_;
  ReadLimit const limit_;
  // The snapshots own their keys.
  std::unordered_multimap<std::u16string_view, CachedFolder, KeyHash, KeyEqual> folders_;
  std::unordered_map<std::u16string, PathKind> kinds_;
  std::unordered_map<std::u16string, std::optional<FolderIdentity>, KeyHash, KeyEqual> identities_;
  FailureLog failures_;
  AnsweredStores stores_;
  std::optional<SubtreeScan> scan_;
  std::optional<SearchStates> announced_;   // the latest search
  std::weak_ptr<void const> announcement_;  // of that search, as long as it is in progress
  std::vector<Exception> notes_;
  bool busy_ = false;
  std::size_t search_ = 0;  // the number of searches announced
  bool hasEvicted_ = false;
  std::size_t const memoryBound_;
  std::size_t memory_ = 0;
  ReadAhead readAhead_;

  CachedFolder* lastRequested_ = nullptr;
  FolderSnapshot* lastLookedIn_ = nullptr;  // the walk looks up many entries of one folder in a row
  std::string name_;                        // of the entry looked up; a member for its capacity
  std::vector<std::pair<std::u16string, std::shared_ptr<NameFilter const>>> filters_;  // by their texts
};

}  // namespace foundation::storage::vfs
