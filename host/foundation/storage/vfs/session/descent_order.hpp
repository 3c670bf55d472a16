#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <unordered_set>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"

namespace foundation::storage::vfs {

/// Predicts which folder a descent requests next: each folder before those in it, siblings in listing order. Links and
/// folders whose names begin with "." aren't predicted. Several folders may be taken before the first of them is read:
/// each leaves its position in the order, where its subfolders will be. Internal to the session.
class DescentOrder {
  struct Pending {
    AbsoluteIRI folder;
    EntryTable subfolders{};
    std::size_t next = 0;
  };

 public:
  /// The position of a folder that was taken; valid until `enter`.
  using Position = std::list<Pending>::iterator;

  /// The folder that is predicted; nothing if none is known.
  std::optional<AbsoluteIRI> next();

  /// Takes the folder that `next` returned.
  Position take(AbsoluteIRI folder);

  /// Takes a folder that wasn't predicted. Its subfolders are predicted before everything else, and it isn't predicted
  /// again itself.
  Position takeOutOfOrder(AbsoluteIRI folder);

  /// Puts the subfolders of the folder that was taken at its position: none if it couldn't be read.
  void enter(Position position, EntryTable subfolders) noexcept;

  /// Forgets all predictions. No position may be open. Folders that were taken out of order remain excluded, as the
  /// folder above them may be entered later.
  void clear() noexcept;

  /// About how many folders can be predicted: some of them may have been taken out of order.
  std::size_t size() const noexcept { return size_; }

 private:
  // The folders that the descent is in, with the subfolders that remain: none while a folder is taken and not yet
  // entered. The names are copies, since the thread that requested a snapshot may change it.
  std::list<Pending> pending_;
  std::size_t size_ = 0;
  // Hashes of keys: if two are equal, one folder too many is skipped.
  std::unordered_set<std::size_t> takenOutOfOrder_;

  std::list<Pending>::iterator firstPending() noexcept;
  void advance(Position position) noexcept;
};

/// The subfolders that a descent is predicted to enter.
EntryTable descendedSubfolders(FolderSnapshot const& snapshot);

}  // namespace foundation::storage::vfs
