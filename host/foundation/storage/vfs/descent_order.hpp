#pragma once

#include <cstddef>
#include <optional>
#include <unordered_set>
#include <vector>

#include "foundation/storage/vfs/folder_reading.hpp"

namespace foundation::storage::vfs {

/// The order in which a descent reads folders: each before those in it, siblings in listing order. Folders whose names
/// begin with "." and links are passed over. Internal to the session.
class DescentOrder {
 public:
  /// Puts what is in the folder before all that is still to come.
  void enter(FolderReading const& reading);

  /// From now on the folder, and what is in it, is passed over: it was read out of order.
  void avoid(AbsoluteIRI const& folder);

  /// The folder that comes next; nothing at the end.
  std::optional<AbsoluteIRI> next();

  /// Goes past it, not into it.
  void pass() noexcept;

  /// Leaves nothing to come. What is to be avoided stays.
  void clear() noexcept { open_.clear(); }

 private:
  // What is still to come in a folder. A copy of its names: a shared reading is changed by the thread that asked for
  // it.
  struct Rest {
    AbsoluteIRI folder;
    EntryTable subfolders;
    std::size_t position;
  };
  std::vector<Rest> open_;                   // none of them empty
  std::unordered_set<std::size_t> avoided_;  // hashes: should two be equal, a folder too many is avoided
};

}  // namespace foundation::storage::vfs
