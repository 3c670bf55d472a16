#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <unordered_set>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"

namespace foundation::storage::vfs {

/// Predicts which folder a descent requests next: each folder before those in it, siblings in listing order. Links and folders whose
/// names begin with "." aren't predicted. Several folders may be taken before the first of them is read: each leaves its position
/// in the order, where its sub-folders will be. Internal to the session.
class DescentOrder {
  struct Pending {
    AbsoluteIRI folder;
    EntryTable subfolders{};
    std::size_t next = 0;
  };

 public:
  /// The position of a folder that was taken; valid until `enter`.
  using Position = std::list<Pending>::iterator;

  /// The folder that is predicted; nothing where none is known.
  std::optional<AbsoluteIRI> next();

  /// Takes the folder that `next` returned.
  Position take(AbsoluteIRI folder);

  /// Takes a folder that wasn't predicted. What is in it comes before everything else, and the folder won't be predicted any more.
  Position takeOutOfOrder(AbsoluteIRI folder);

  /// Puts the sub-folders of the folder that was taken at its position: none where it couldn't be read.
  void enter(Position position, EntryTable subfolders) noexcept;

  /// Forgets all predictions. No position may be open. Folders taken out of order stay so: the one above them may be entered later.
  void clear() noexcept;

  /// About how many folders can be predicted: some of them may have been taken out of order.
  std::size_t size() const noexcept { return size_; }

 private:
  // What remains of each folder that is being descended: nothing yet where it is taken, otherwise something. The names are a copy, as
  // a shared snapshot is changed by the thread that requested it.
  std::list<Pending> pending_;
  std::size_t size_ = 0;
  std::unordered_set<std::size_t>
      takenOutOfOrder_;  // hashes of keys: where two are equal, a folder too many is skipped

  std::list<Pending>::iterator firstPending() noexcept;
  void advance(Position position) noexcept;
};

/// The entries of the folder that a descent goes into.
EntryTable descendedSubfolders(FolderSnapshot const& snapshot);

}  // namespace foundation::storage::vfs
