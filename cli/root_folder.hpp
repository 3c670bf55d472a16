#pragma once

#include <string>

/// The root folder as the user wrote it: a local path or an IRI; empty for the current folder.
namespace kglob {

/// Whether the root folder, which must not be empty, is a folder. Throws what the storage layer throws when it can't
/// find out.
bool isFolder(std::u16string const& rootFolder);

/// An absolute local path as the user would write it: beginning with `rootFolder` if it is below that folder, unchanged
/// otherwise.
std::u16string asWritten(std::u16string const& path, std::u16string const& rootFolder);

/// A hint to report for an absolute local pattern with a root folder in a store: the pattern is searched in the store
/// too, although it looks like a path on the local disk. Empty for all other patterns and root folders.
std::u16string absolutePatternHint(std::u16string const& pattern, std::u16string const& rootFolder);

}  // namespace kglob
