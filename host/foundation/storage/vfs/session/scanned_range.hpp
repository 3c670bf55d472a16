#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"

namespace foundation::storage::vfs {

/// What was read of a flat store without a gap: the keys below a root from one path up to another, the position. Each
/// folder that begins and ends within it is as complete as if it had been listed. Paths are relative to the root, and
/// those of folders end in "/"; the root's is empty. Makes no request. Internal to the session.
class ScannedRange {
 public:
  using Snapshots = std::vector<std::shared_ptr<FolderSnapshot>>;

  /// An empty range at the beginning of a folder below `root`. Of the root's own entries only those count whose names
  /// begin with `prefix`, and in all folders only what `visibility` shows, which must outlive the range.
  ScannedRange(AbsoluteIRI root, std::string prefix, std::string folder, Visibility const& visibility);

  /// The folder at whose first key the range begins.
  std::string const& begin() const noexcept { return begin_; }

  /// The last path read: the next page begins after it.
  std::string const& position() const noexcept { return position_; }

  /// What the provider calls the next page.
  std::string const& nextPage() const noexcept { return nextPage_; }

  /// Whether a page after the position can be added. Not at the end of the keys or at another range, nor after a page
  /// that is empty although others follow, as the same page would come again.
  bool canGrow() const noexcept { return !isClosed_; }

  /// Whether the path lies within what was read.
  bool contains(std::string_view path) const noexcept { return begin_ <= path && path <= position_; }

  /// Adds the page after the position. Returns the folders that it completes, sorted, in the order in which they end.
  /// Paths from `end` on belong to another range and are left out: the range then ends there; empty for no other range.
  Snapshots append(SubtreePage const& page, std::string_view end);

  /// The folder's entries up to the position, unsorted, if the range has read the folder from its beginning and not to its
  /// end; otherwise null.
  FolderSnapshot const* unfinished(std::string_view folder) const noexcept;

  /// The same, for the caller to complete: the range doesn't return that folder any more.
  std::shared_ptr<FolderSnapshot> takeUnfinished(std::string_view folder) noexcept;

 private:
  struct OpenFolder {
    std::string path;
    std::shared_ptr<FolderSnapshot> snapshot;  // null if keys before the first one read may be missing, or once taken
    bool exists;  // whether a key showed it; the range may begin at a folder that doesn't exist
  };

  void open(std::string path, bool isRead, bool exists);
  void add(std::string_view path, EntryFacts const* facts, Snapshots& complete);
  void skipHidden();
  void closeUntil(std::string_view path, Snapshots& complete);
  void close(Snapshots& complete);

  AbsoluteIRI root_;
  std::string prefix_;
  Visibility const& visibility_;
  std::string begin_;
  std::string position_;
  std::string nextPage_;
  std::vector<OpenFolder> open_;  // those that contain the position, outermost first
  bool isClosed_ = false;
};

}  // namespace foundation::storage::vfs
