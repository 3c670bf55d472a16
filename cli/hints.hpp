#pragma once

#include <string>
#include <vector>

#include "cli/options.hpp"

/// What to tell a user whose search probably isn't the one that was meant. A hint is one line, and never blames a part of
/// a pattern that something matches.
namespace kglob {

/// Hints that the command line alone gives.
std::vector<std::string> hintsBeforeSearch(Options const& options);

/// For a search with matches: a second operand that names a folder, as `find` takes its folders. Empty if it doesn't. May
/// cost a look-up.
std::string hintAboutFolderOperand(Options const& options);

/// The buckets (for other schemes, the hosts) that patterns without matches name and that don't exist, as IRIs. Costs a
/// look-up for each bucket that is named.
std::vector<std::string> missingStores(std::vector<std::string> const& unmatched);

/// For patterns that nothing matched: the first hint that one of the first few gives, empty if none does. Costs look-ups.
std::string hintWhenNothingMatched(std::vector<std::string> const& patterns, std::string const& rootFolder);

}  // namespace kglob
