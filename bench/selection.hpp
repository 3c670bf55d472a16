#pragma once

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace korvan::bench {

/// What the hand-written loops look for: a substitute for patterns that costs almost nothing.
struct Selection {
  bool foldersOnly = false;
  std::string_view suffix;  ///< the end of the name
  char ancestor = 0;        ///< if not 0: the name of some folder above the entry begins with it
  std::size_t depth = 0;    ///< if not 0: the number of elements of the path, and the depth limit of the loop
  bool countOnly = false;   ///< print the number of entries seen, but no paths

  /// Whether the path, relative to the root, is selected. Dot entries are skipped by the loops themselves.
  bool selects(std::string_view path, std::size_t pathDepth, bool isFolder) const noexcept {
    if (foldersOnly && !isFolder) return false;
    if (depth != 0 && pathDepth != depth) return false;
    if (!path.ends_with(suffix)) return false;
    return ancestor == 0 || hasAncestor(path);
  }

  bool descends(std::size_t pathDepth) const noexcept { return depth == 0 || pathDepth < depth; }

 private:
  bool hasAncestor(std::string_view path) const noexcept {
    for (std::size_t start = 0;;) {
      std::size_t const end = path.find('/', start);
      if (end == std::string_view::npos) return false;
      if (path[start] == ancestor) return true;
      start = end + 1;
    }
  }
};

/// The selection in the program's arguments; exits if they are invalid.
inline Selection selectionFromArguments(int argc, char** argv) {
  Selection selection;
  for (int i = 1; i < argc; ++i) {
    std::string_view const option = argv[i];
    if (option == "--folders") {
      selection.foldersOnly = true;
    } else if (option == "--count") {
      selection.countOnly = true;
    } else if (option == "--suffix" && i + 1 < argc) {
      selection.suffix = argv[++i];
    } else if (option == "--ancestor" && i + 1 < argc) {
      selection.ancestor = argv[++i][0];
    } else if (option == "--depth" && i + 1 < argc) {
      selection.depth = std::strtoull(argv[++i], nullptr, 10);
    } else {
      std::cerr << "usage: " << argv[0] << " [--folders] [--suffix TEXT] [--ancestor LETTER] [--depth N] [--count]\n";
      std::exit(2);
    }
  }
  return selection;
}

}  // namespace korvan::bench
