#pragma once

#include <cstddef>
#include <string>

#include "cli/search.hpp"

namespace kglob {

/// Reports the folders that a search couldn't read, so that an incomplete result isn't taken for a complete one: one
/// line each, ten at most, then a count.
class FailedFolders {
 public:
  static constexpr std::size_t maximumLines = 10;

  /// The search and the root folder must outlive this.
  FailedFolders(Search& search, std::string const& rootFolder) : search_(search), rootFolder_(rootFolder) {}

  /// Reports the notes and failures since the last call, in the search for `pattern`. Local folders are written the way the matches
  /// of that pattern are, below the root folder as the user wrote it; as IRIs if the pattern or the root folder is one.
  /// Folders in stores are always written as IRIs.
  void reportNew(std::string const& pattern);

  /// Reports how many were not reported one by one. Returns whether there was any failure.
  bool finish() const;

 private:
  Search& search_;
  std::string const& rootFolder_;
  std::size_t count_ = 0;
};

}  // namespace kglob
