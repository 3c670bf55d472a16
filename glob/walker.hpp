#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "foundation/storage/vfs/folder.hpp"
#include "foundation/storage/vfs/storage_system.hpp"
#include "glob/dead_ends.hpp"
#include "glob/listing.hpp"
#include "glob/pattern_plan.hpp"
#include "korvan/io/path.hpp"

namespace korvan::io::internal {

/// The walk behind every search: returns the matches one by one and reads no further than the next one requires. It
/// goes depth first over the segments of the pattern and the folders of the tree at once, on a stack of its own, so that
/// neither a long pattern nor a deep tree uses up the thread's stack. For one thread at a time.
class Walker {
 public:
  /// Walks over the matches of a pattern. The only match of a pattern without a wildcard is the pattern itself, if
  /// something exists there. A relative pattern is resolved against `root` and has relative matches; with `foldersOnly`
  /// the last segment matches folders only.
  Walker(Path const& pattern, Path const& root, bool foldersOnly, bool includeDotFiles);

  /// Walks over everything below the folder, as paths relative to it.
  Walker(foundation::storage::vfs::Folder const& folder, bool foldersOnly, bool includeDotFiles);

  /// The next match, valid until the next call; null at the end. Throws what `pathKind` and the constructor of a `Folder`
  /// from an IRI throw, and `Quindarel::System::InterruptException` when an interrupt is pending at a segment or after an
  /// entry. An exception ends the walk.
  Path const* next();

 private:
  // A folder whose entries are iterated over: those that a wildcard matches, or all of them in the descent of a "**". It
  // is opened, which means listed, when it reaches the top of the stack.
  struct Frame {
    std::size_t segment = 0;
    Path at{};  // the folder's path, with which the matches below it begin
    std::optional<foundation::storage::vfs::Folder> folder{};
    MatchingEntries entries{};
    std::size_t nameStart = std::u16string::npos;  // where an entry's name begins in its path; npos if it isn't known
    std::uint64_t matchesBefore = 0;
    bool isDescent = false;
    bool isBelow = false;  // whether the folder is an entry of the frame under this one, reached by its descent
    bool isOpen = false;
    bool hasStarted = false;  // whether the walk has asked for an entry
    bool hasVisited = false;  // whether an entry matched
    bool metCycle = false;  // whether this descent was refused a folder, which another descent may be allowed to enter
    bool isAbsent = false;  // whether no descent finds this folder below the one above
  };

  void begin();
  void announce(foundation::storage::vfs::AbsoluteIRI const& start);
  void step();
  void enter(std::size_t segment);
  Frame& push(std::size_t segment, bool isDescent);
  void open(Frame& frame);
  void list(Frame& frame);
  void close();
  void visit(Frame& frame);
  void moveTo(Frame& frame);
  bool isFolder(Frame const& frame, ListedKind listed) const;
  bool openBelow(Frame& frame);
  bool onlyFoldersFollow(std::size_t segment) const noexcept;
  bool matchesLiteral(std::size_t segment) const;

  bool foldersOnlyAt(std::size_t segment) const noexcept { return foldersOnly_ || segment + 1 < plan_->size(); }

  Path root_;
  bool foldersOnly_;
  bool includeDotFiles_;
  foundation::storage::vfs::StorageSystemReference storage_;

  std::shared_ptr<void const> announcement_;  // to the storage layer

  Path pattern_;                     // to be walked over at the first call of `next`
  std::optional<PatternPlan> plan_;  // of a pattern with a wildcard, once it has begun
  bool hasBegun_ = false;
  std::deque<Frame> frames_;  // those past the top are reused
  std::size_t depth_ = 0;
  DeadEnds deadEnds_;
  std::uint64_t matches_ = 0;
  bool hasMatch_ = false;  // whether `match_` is a match that the caller hasn't seen
  Path match_;             // the path that the walk has reached: begins with the path of every frame's folder
};

}  // namespace korvan::io::internal
