#pragma once

#include <string>
#include <string_view>

/// Paths and IRIs as the user wrote them. A root folder is a local path or an IRI, or empty for the current folder.
namespace kglob {

/// Whether the text begins with a scheme and "://".
bool isIRI(std::string_view text);

/// The absolute path of a local root folder; an IRI as it is. Empty when the current folder is unknown.
std::string absoluteRoot(std::string const& rootFolder);

/// An absolute local path as the user would write it: beginning with `rootFolder` if it is below that folder, unchanged
/// otherwise.
std::string asWritten(std::string const& path, std::string const& rootFolder);

/// A hint to report for an absolute local pattern with a root folder in a store: the pattern is searched in the store
/// too, although it looks like a path on the local disk. Empty for all other patterns and root folders.
std::string absolutePatternHint(std::string const& pattern, std::string const& rootFolder);

}  // namespace kglob
