#pragma once

#include <vector>

#include "foundation/storage/vfs/folder.hpp"
#include "glob/existence.hpp"
#include "korvan/io/path.hpp"

namespace korvan::io::internal {

/// All paths that match the pattern, in the order of the walk, including duplicates. Throws what `Walker` throws.
std::vector<Path> expandPattern(Path const& pattern, Path const& root, bool foldersOnly, bool includeDotFiles);

/// The `SegmentMatcher` of a segment without "*": the segment itself if it exists in the folder; for the empty segment,
/// if the folder is one. The flags have no effect. One existence test.
std::vector<Path> matchLiteralSegment(Path const& segment, Path const& folder, bool foldersOnly, bool includeDotFiles);

/// The `SegmentMatcher` of "**": the empty path for the folder itself if it is one, then `collectDescendants`.
std::vector<Path> matchDoubleStarSegment(Path const& segment, Path const& folder, bool foldersOnly,
                                         bool includeDotFiles);

/// Every entry below the folder at any depth, relative to it, each folder before what is below it; subfolders only
/// with `foldersOnly`, dot entries (and what is below them) only with `includeDotFiles`. What can't be read or looked
/// up is skipped. One listing for each folder, one existence test for each entry.
std::vector<Path> collectDescendants(foundation::storage::vfs::Folder const& folder, bool foldersOnly,
                                     bool includeDotFiles);

}  // namespace korvan::io::internal
