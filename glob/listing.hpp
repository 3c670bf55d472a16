#pragma once

#include <functional>
#include <string>
#include <vector>

#include "foundation/storage/vfs/folder.hpp"
#include "glob/entry_names.hpp"
#include "korvan/io/path.hpp"

namespace korvan::io::internal {

/// Matches one pattern segment in one folder: the matches as paths relative to the folder, in order.
using SegmentMatcher =
    std::function<std::vector<Path>(Path const& segment, Path const& folder, bool foldersOnly, bool includeDotFiles)>;

/// Replaces `names` by those of the folder's entries that match the filter ("*" is any run of characters), in the
/// listing's order; subfolders only with `foldersOnly`. Names that begin with "." only with `includeDotFiles` or if
/// the filter begins with one. No names if the storage layer fails at any point of the listing. Throws
/// `Quindarel::System::InterruptException` when an interrupt is pending after an entry. One listing.
void listEntryNames(EntryNames& names, foundation::storage::vfs::Folder const& folder, std::u16string const& filter,
                    bool foldersOnly, bool includeDotFiles);

/// The same names, each as a local path.
std::vector<Path> listFolderEntries(foundation::storage::vfs::Folder const& folder, std::u16string const& filter,
                                    bool foldersOnly, bool includeDotFiles);

/// The `SegmentMatcher` of a segment with "*" in it that isn't "**": the entries of the folder that the segment matches
/// as a filter. Throws what `Path::toIRI` and the constructor of `Folder` throw. One listing.
std::vector<Path> matchWildcardSegment(Path const& segment, Path const& folder, bool foldersOnly, bool includeDotFiles);

}  // namespace korvan::io::internal
