#pragma once

#include <vector>

#include "foundation/storage/vfs/folder.hpp"
#include "foundation/storage/vfs/path_kind.hpp"
#include "korvan/io/path.hpp"

namespace korvan::io::internal {

using foundation::storage::vfs::PathKind;

/// All paths that match the pattern, in the order of the walk, duplicates kept. A relative pattern is resolved against
/// `root` and gives relative paths; with `foldersOnly` the last segment matches folders only. Throws what `pathKind`
/// and the segment matchers throw, and `Quindarel::System::InterruptException` when an interrupt is pending at a
/// segment with a wildcard.
std::vector<Path> expandPattern(Path const& pattern, Path const& root, bool foldersOnly, bool includeDotFiles);

/// What stands at `absolute(path, base)`; `notFound` also when the storage layer says so by an error. Throws its other
/// errors. One existence test.
PathKind pathKind(Path const& path, Path const& base);

/// The `SegmentMatcher` of a segment without "*": the segment itself where it stands in the folder; the empty segment
/// where the folder is one. The flags play no part. One existence test.
std::vector<Path> matchLiteralSegment(Path const& segment, Path const& folder, bool foldersOnly, bool includeDotFiles);

/// The `SegmentMatcher` of "**": the empty path for the folder itself where it is one, then `collectDescendants`.
std::vector<Path> matchDoubleStarSegment(Path const& segment, Path const& folder, bool foldersOnly,
                                         bool includeDotFiles);

/// Every entry below the folder at any depth, relative to it, each folder before what is below it; sub-folders only
/// with `foldersOnly`, dot entries (and what is below them) only with `includeDotFiles`. What can't be read or looked
/// at is passed over. One listing for each folder, one existence test for each entry.
std::vector<Path> collectDescendants(foundation::storage::vfs::Folder const& folder, bool foldersOnly,
                                     bool includeDotFiles);

}  // namespace korvan::io::internal
