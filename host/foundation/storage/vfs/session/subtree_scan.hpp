#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/session/answered_stores.hpp"
#include "foundation/storage/vfs/session/read_ahead.hpp"
#include "foundation/storage/vfs/session/scanned_range.hpp"

namespace foundation::storage::vfs {

/// Reads the folders of a flat store with few requests: by pages of all keys below a root, which complete many small
/// folders each, or by listing a folder alone where its subfolders hold most keys. What was read is kept, as ranges of
/// keys: each request begins where an earlier one ended, or at a folder in none of the ranges. A descent requests
/// folders nearly in key order, so that one range grows to its end; what it skips begins another range. Internal to the
/// session.
class SubtreeScan {
 public:
  using ProviderPointer = std::shared_ptr<Provider>;
  using AddToCache = std::function<void(std::shared_ptr<FolderSnapshot>)>;

  /// What the search is going to list next.
  enum class Expectation {
    thisFolder,       ///< none of the folders below the one that it asks for
    unknown,          ///< perhaps some of them
    everythingBelow,  ///< all of them, so that no page is read in vain
  };

  /// A scan of what exists below `root`, begins with `prefix` and isn't hidden by `visibility`. For one folder it reads
  /// only a part of `memoryBound` bytes ahead. Every request goes through `reads` and `stores`; all three must outlive
  /// it. Makes no request.
  SubtreeScan(AbsoluteIRI root, std::string prefix, Visibility const& visibility, std::size_t memoryBound,
              ReadAhead& reads, AnsweredStores& stores);

  /// Whether the location is a folder below the root that the scan can reach (or the root, for the same prefix).
  bool reaches(AbsoluteIRI const& location, std::string_view prefix) const;

  /// The entries of the folder, which the scan must reach: at least those whose names begin with `prefix`. Passes on
  /// the other folders that the same pages complete. Throws as `Provider::list` and `Provider::subtree` do; what was
  /// read before remains.
  std::shared_ptr<FolderSnapshot> read(ProviderPointer const& provider, AbsoluteIRI const& folder,
                                       std::string_view prefix, Expectation expected, AddToCache const& addToCache);

  /// Reads one page for entries of the folder that could be looked up individually, if that is worth its request: it
  /// passes on the folders that the page completes. A page that completes the folder it was read for answers the next
  /// lookups too. Otherwise pages back off: each unhelpful page in a row doubles the number of individual lookups before
  /// the next page, up to a bound, as small folders may follow a huge one.
  void readForLookup(ProviderPointer const& provider, AbsoluteIRI const& folder, AddToCache const& addToCache);

  /// How many entries will be looked up individually before the next page is read for one.
  std::size_t lookupsBeforeAPage() const noexcept { return isUnordered_ ? SIZE_MAX : lookupsToSkip_; }

  /// Whether the store was found not to list in byte order: then each folder is listed alone.
  bool isUnordered() const noexcept { return isUnordered_; }

 private:
  using Ranges = std::list<ScannedRange>;
  // What has been read for the folder that is wanted.
  struct Progress {
    std::size_t pages = 0;
    std::size_t memory = 0;                  // of the folders that they completed
    std::shared_ptr<FolderSnapshot> wanted;  // once it is complete
  };

  std::string pathBelowRoot(AbsoluteIRI const& folder) const;
  Ranges::iterator rangeFor(std::string const& wanted, Progress const& progress, Expectation expected);
  bool mayReadAhead(Progress const& progress) const noexcept;
  bool isWorthAPage(ScannedRange const& range, std::string_view wanted, std::string_view prefix, Expectation expected,
                    Progress const& progress) const;
  void readPage(ProviderPointer const& provider, AbsoluteIRI const& folder, std::string_view wanted,
                Ranges::iterator range, Expectation expected, Progress& progress, AddToCache const& addToCache);
  SubtreePage nextPage(ProviderPointer const& provider, AbsoluteIRI const& folder, ScannedRange const& range,
                       Expectation expected);
  SubtreeRequest subtree() const;
  std::shared_ptr<FolderSnapshot> list(ProviderPointer const& provider, AbsoluteIRI const& folder,
                                       std::string_view wanted, std::string_view prefix);
  bool listPages(ProviderPointer const& provider, FolderSnapshot& snapshot, std::string after);
  void noteDisorder(AbsoluteIRI const& folder);

  AbsoluteIRI root_;
  std::string prefix_;
  Visibility const& visibility_;
  std::size_t memoryBound_;
  ReadAhead& reads_;
  AnsweredStores& stores_;
  Ranges ranges_;  // disjoint; the one used last comes first
  std::size_t pages_ = 0;
  std::size_t listings_ = 0;  // requests for folders that were listed alone, about
  bool isUnordered_ = false;
  std::size_t lookupsToSkip_ = 0;   // before the next page is worth its request
  std::size_t unhelpfulPages_ = 0;  // for lookups, in a row
};

}  // namespace foundation::storage::vfs
