#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "kglob.h"

namespace korvan::test {

/// A search through the C interface, closed at the end.
class CSearch {
 public:
  CSearch(char const* pattern, kglob_options const* options) : search_(kglob_open(pattern, options)) {}
  CSearch(std::string const& pattern, std::string const& root, bool includeDotFiles = false) {
    kglob_options options = KGLOB_OPTIONS_INIT;
    options.root_folder = root.c_str();
    options.include_dot_files = includeDotFiles ? 1 : 0;
    search_ = kglob_open(pattern.c_str(), &options);
  }
  CSearch(std::vector<char const*> const& patterns, kglob_options const* options)
      : search_(kglob_open_patterns(patterns.data(), patterns.size(), options)) {}
  ~CSearch() { kglob_close(search_); }
  CSearch(CSearch const&) = delete;
  CSearch& operator=(CSearch const&) = delete;

  operator kglob_search*() const { return search_; }

  /// The status of the next block, whose matches are added to `matches`.
  kglob_status next(int timeout = -1) {
    char const* block = nullptr;
    kglob_status const status = kglob_next_block(search_, timeout, &block, &length);
    for (std::size_t i = 0; i < length; i += matches.back().size() + 1) matches.emplace_back(block + i);
    return status;
  }

  /// Takes all further blocks; the status at the end.
  kglob_status finish() {
    kglob_status status = next();
    while (status == KGLOB_OK && length > 0) status = next();
    return status;
  }

  std::vector<std::string> matches;
  std::size_t length = 0;  // of the last block

 private:
  kglob_search* search_ = nullptr;
};

}  // namespace korvan::test
