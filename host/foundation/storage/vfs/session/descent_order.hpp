#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <unordered_set>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"

namespace foundation::storage::vfs {

/// The order in which a descent reads folders: each before those in it, siblings in listing order. Folders whose names
/// begin with "." and links are passed over. Several folders may be taken before the first of them is read: what is in
/// each has its place kept. Internal to the session.
class DescentOrder {
  struct Rest {
    AbsoluteIRI folder;
    EntryTable subfolders{};
    std::size_t position = 0;
  };

 public:
  /// The place of a folder that was taken, until `enter`.
  using Place = std::list<Rest>::iterator;

  /// The folder that comes next; nothing where none is known.
  std::optional<AbsoluteIRI> next();

  /// Takes the folder that `next` gave.
  Place take(AbsoluteIRI folder);

  /// Takes a folder that isn't next. What is in it comes before all else, and the folder won't come again.
  Place takeAside(AbsoluteIRI folder);

  /// Puts the sub-folders of the one that was taken into its place: none of one that couldn't be read.
  void enter(Place place, EntryTable subfolders) noexcept;

  /// Leaves nothing to come. No place may be taken. What was taken aside stays so: the folder above it may be entered
  /// yet.
  void clear() noexcept;

  /// How many folders are known to come, about: some of them may have been taken aside.
  std::size_t size() const noexcept { return size_; }

 private:
  // What is still to come in a folder: nothing yet in one that is taken, else something. A copy of the names, as a
  // shared reading is changed by the thread that asked for it.
  std::list<Rest> rests_;
  std::size_t size_ = 0;
  std::unordered_set<std::size_t> aside_;  // hashes of keys: should two be equal, a folder too many is passed over

  std::list<Rest>::iterator nextRest() noexcept;
  void pass(Place rest) noexcept;
};

/// Those of the folder's entries that a descent goes into.
EntryTable followedSubfolders(FolderReading const& reading);

}  // namespace foundation::storage::vfs
