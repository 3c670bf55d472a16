#pragma once

#include <string>
#include <vector>

#include "cli/options.hpp"

/// What to tell a user whose search probably isn't the one that was meant. A hint is one line, and never blames a part of
/// a pattern that something matches.
namespace kglob {

/// Hints that the command line alone gives.
std::vector<std::string> hintsBeforeSearch(Options const& options);

/// For a search with matches: an operand after the first that names a folder, as `find` takes its folders. Empty if there
/// is none. May cost a look-up.
std::string hintAboutFolderOperand(Options const& options);

/// For patterns that nothing matched.
struct NoMatchHint {
  std::string text;
  bool isError = false;  ///< the store that a pattern names doesn't exist
};

/// The first hint that one of the patterns gives; without a text if none does. Costs look-ups.
NoMatchHint hintWhenNothingMatched(std::vector<std::string> const& patterns, std::string const& rootFolder);

}  // namespace kglob
