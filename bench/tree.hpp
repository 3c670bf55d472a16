#pragma once

#include <cstddef>
#include <filesystem>

namespace korvan::bench {

/// The size of a tree. `entries` counts visible entries, including folders; about one hidden entry is added per fifty.
struct TreeShape {
  std::size_t folders;
  std::size_t entries;
};

/// Makes a tree of empty files below `root`, which must not exist: a source tree's mix of names, folders from depth 1
/// to 8 (5 on average), many with a handful of files and a few with hundreds, a quarter of them named d*. Random, but
/// the same for the same shape. Names hold ASCII letters, digits, "_", "-" and "." only, so that lists of paths can be
/// compared line by line. No links. Throws `std::system_error` and then leaves an incomplete tree behind.
void makeTree(std::filesystem::path const& root, TreeShape shape);

}  // namespace korvan::bench
