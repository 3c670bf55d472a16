#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"

namespace foundation::storage::vfs {

/// Reads many small folders of a flat store with few requests. One page of keys below a root holds, in key order, whole
/// subfolders one after the other: each that begins and ends within what was read without a gap is as complete as if
/// it had been listed. A descent requests folders nearly in key order, so pages follow one another; if it skips some,
/// the scan skips them too. Internal to the session.
class SubtreeScan {
 public:
  using AddToCache = std::function<void(std::shared_ptr<FolderSnapshot>)>;

  /// A scan of what exists below `root`, begins with `prefix` and isn't hidden by `visibility`, which must outlive the
  /// scan. Makes no request.
  SubtreeScan(AbsoluteIRI root, std::string prefix, Visibility const& visibility);

  /// Whether the location is a folder below the root that the scan can reach (or the root, for the same prefix).
  bool reaches(AbsoluteIRI const& location, std::string_view prefix) const;

  /// Reads one page, from the position that soonest completes `folder`, which the scan must reach: one request. Passes
  /// on each folder that is now complete, sorted. Throws as `Provider::subtree` does; the next call then starts over.
  void advance(Provider& provider, AbsoluteIRI const& folder, AddToCache const& addToCache);

  /// Whether a page is worth its request for an entry that could be looked up individually. A page that completes the
  /// folder it was read for answers the next lookups too. Otherwise pages back off: each unhelpful page in a row
  /// doubles the number of individual lookups before the next page, up to a bound, as small folders may follow a huge
  /// one.
  bool isWorthAPage();

  /// How many more lookups aren't worth a page.
  std::size_t lookupsToSkip() const noexcept { return lookupsToSkip_; }

 private:
  struct OpenFolder {
    std::string path;                          // below the root, ending in "/"; empty for the root
    std::shared_ptr<FolderSnapshot> snapshot;  // null if keys before the first one read may be missing
    bool exists;  // whether a key showed it; a page may have begun at a folder that doesn't exist
  };

  SubtreePage pageFor(Provider& provider, AbsoluteIRI const& folder) const;
  std::string pathBelowRoot(AbsoluteIRI const& folder) const;
  void beginAt(std::string const& path);
  void open(std::string path, bool complete, bool exists);
  void add(std::string_view path, EntryFacts const* facts, AddToCache const& addToCache);
  void skipHidden();
  void closeUntil(std::string_view path, AddToCache const& addToCache);

  AbsoluteIRI root_;
  std::string prefix_;
  Visibility const& visibility_;
  std::string position_;  // the last path read; the next page begins after it
  std::vector<OpenFolder> open_;
  bool intact_ = true;  // whether the last page was processed to its end; otherwise open folders may lack keys
  std::size_t lookupsToSkip_ = 0;   // before the next page is worth its request
  std::size_t unhelpfulPages_ = 0;  // in a row
};

}  // namespace foundation::storage::vfs
