#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/storage/vfs/folder.hpp"
#include "glob/existence.hpp"
#include "korvan/io/path.hpp"

namespace korvan::io::internal {

/// Matches one pattern segment in one folder: the matches as paths relative to the folder, in order.
using SegmentMatcher =
    std::function<std::vector<Path>(Path const& segment, Path const& folder, bool foldersOnly, bool includeDotFiles)>;

/// What a listing says about an entry's kind.
enum class ListedKind : std::uint8_t {
  unknown,  ///< nothing: an existence test can find out
  folder,
  other,
};

inline ListedKind listedKind(std::optional<PathKind> kind) noexcept {
  if (!kind) return ListedKind::unknown;
  return kind == PathKind::isFolder ? ListedKind::folder : ListedKind::other;
}

/// Moves over the entries of a folder that a segment matches, in the listing's order. Begins before the first. The
/// other members are for the entry that `next` has moved to.
class MatchingEntries {
 public:
  /// No entries.
  MatchingEntries() = default;

  /// The folder's entries that match the filter ("*" is any run of characters); subfolders only with `foldersOnly`.
  /// Names that begin with "." only with `includeDotFiles` or if the filter begins with one. No entries if the storage
  /// layer fails at any point of the listing. One listing.
  MatchingEntries(foundation::storage::vfs::Folder const& folder, std::u16string const& filter, bool foldersOnly,
                  bool includeDotFiles);

  /// Moves to the next entry; false if there is none. Throws `Quindarel::System::InterruptException` when an interrupt
  /// is pending after an entry.
  bool next();

  /// How many entries of the folder were passed, those that don't match included. 0 if there is no listing.
  std::size_t position() const noexcept { return cursor_ ? cursor_->position() : 0; }

  ListedKind kind() const noexcept { return listedKind(cursor_->getKind()); }
  std::u16string name() const { return cursor_->getName(); }
  void appendName(std::u16string& text) const { cursor_->appendName(text); }

  /// The entry as a subfolder: see `EntryCursor::enter`.
  foundation::storage::vfs::Folder enter() const { return cursor_->enter(); }

 private:
  std::optional<foundation::storage::vfs::EntryCursor> cursor_;
  bool showDotEntries_ = false;
  bool atEntry_ = false;
};

/// The names of these entries, each as a local path.
std::vector<Path> listFolderEntries(foundation::storage::vfs::Folder const& folder, std::u16string const& filter,
                                    bool foldersOnly, bool includeDotFiles);

/// The `SegmentMatcher` of a segment with "*" in it that isn't "**": the entries of the folder that the segment matches
/// as a filter. Throws what `Path::toIRI` and the constructor of `Folder` throw. One listing.
std::vector<Path> matchWildcardSegment(Path const& segment, Path const& folder, bool foldersOnly, bool includeDotFiles);

}  // namespace korvan::io::internal
