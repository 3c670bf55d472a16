#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "foundation/storage/vfs/folder.hpp"
#include "foundation/storage/vfs/storage_system.hpp"
#include "glob/dead_ends.hpp"
#include "glob/entry_names.hpp"
#include "glob/pattern_plan.hpp"
#include "korvan/io/path.hpp"

namespace korvan::io::internal {

/// The one walk behind every search: gives the matches one by one, and reads no further than it must for the next. A depth-first
/// walk over two dimensions at once, the segments of the pattern and the folders below, on a stack of its own: neither a long
/// pattern nor a deep tree uses the thread's stack, and between two matches nothing is left on it. For one thread at a time.
class Walker {
 public:
  /// Walks over the matches of a pattern: of one without a wildcard the path itself, where it exists. A relative pattern is
  /// resolved against `root` and gives relative paths; with `foldersOnly` the last segment matches folders only.
  Walker(Path const& pattern, Path const& root, bool foldersOnly, bool includeDotFiles);

  /// Walks over everything below the folder, as paths relative to it.
  Walker(foundation::storage::vfs::Folder const& folder, bool foldersOnly, bool includeDotFiles);

  /// The next match, valid until the next call; null at the end. Throws what `pathKind` throws, what making a folder's handle throws
  /// (not below a given folder), and `Quindarel::System::InterruptException` when an interrupt is pending at a segment or after an
  /// entry; the walk is over then.
  Path const* next();

 private:
  // A folder whose entries are gone through: those that a wildcard matches, or in the descent of a "**" all of them. Opened, which
  // means listed, when it comes to the top of the stack.
  struct Frame {
    std::size_t segment = 0;
    Path at{};  // the path of the folder, as matches begin with it
    std::optional<foundation::storage::vfs::Folder> folder{};
    EntryNames entries{};
    std::size_t next = 0;
    std::uint64_t matchesBefore = 0;
    bool isDescent = false;
    bool isBelow = false;  // whether the descent of the frame under this one on the stack has come to the folder
    bool isOpen = false;
    bool metCycle = false;  // whether a folder in this descent was refused, as it may not be in another one
  };

  void begin();
  void step();
  void enter(std::size_t segment);
  Frame& push(std::size_t segment, bool isDescent);
  void open(Frame& frame);
  void list(Frame& frame);
  void close();
  void takeNext(Frame& frame);
  bool isFolder(Frame const& frame, ListedKind listed) const;
  bool openBelow(Frame& frame);
  bool matchesLiteral(std::size_t segment) const;

  bool foldersOnlyAt(std::size_t segment) const noexcept { return foldersOnly_ || segment + 1 < plan_->size(); }

  Path root_;
  bool foldersOnly_;
  bool includeDotFiles_;
  foundation::storage::vfs::StorageSystemReference storage_;

  Path pattern_;                     // to be walked over at the first call of `next`
  std::optional<PatternPlan> plan_;  // of a pattern with a wildcard, once it has begun
  bool hasBegun_ = false;
  std::deque<Frame> frames_;  // those past the top are reused
  std::size_t depth_ = 0;
  DeadEnds deadEnds_;
  std::uint64_t matches_ = 0;
  bool hasMatch_ = false;  // whether `match_` is one that the caller hasn't seen
  std::u16string name_;    // of the entry taken or opened last
  Path match_;             // the path that the walk has come to
};

}  // namespace korvan::io::internal
