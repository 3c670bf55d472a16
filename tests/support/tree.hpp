#pragma once

#include <map>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/storage/vfs/entry_sink.hpp"

namespace korvan::test {

class TemporaryFolder;
using foundation::storage::vfs::EntryKind;

/// A small file system: what a search is held against, and what the in-memory provider serves. Paths are bytes, taken
/// from its root; where one is looked up, ".", ".." and links are followed as a disk follows them.
class Tree {
 public:
  /// Each makes the folders above it too, and returns the tree, to be chained.
  Tree& addFile(std::string const& path) { return add(path, {EntryKind::file, ""}); }
  Tree& addFolder(std::string const& path) { return add(path, {EntryKind::folder, ""}); }
  /// `target` is a path from the tree's root.
  Tree& addLink(std::string const& path, std::string const& target) { return add(path, {EntryKind::link, target}); }

  /// The path without links and detours of what stands there; nothing where nothing does or a link leads nowhere.
  std::optional<std::string> resolve(std::string_view path, bool followLast = true, int links = 40) const;

  bool isFolder(std::string_view path) const { return resolve(std::string(path) + "/").has_value(); }

  using Entries = std::vector<std::pair<std::string, EntryKind>>;
  /// All below the folder, at any depth, by paths from it; links aren't followed.
  Entries below(std::string_view folder) const;

  /// What the folder itself holds, in the order of the names.
  Entries children(std::string_view folder) const;

  /// Makes the same tree on disk.
  void writeTo(TemporaryFolder const& folder) const;

  /// Where a random tree's entries lie: so deep that no ".." of a pattern leads out of the tree.
  static inline std::string const searchRoot = "t/t/t/t/t/t";

  /// A tree of at most `entries` entries below `searchRoot`, with names that patterns confuse easily.
  static Tree random(std::mt19937& random, std::size_t entries, bool links);

 private:
  struct Entry {
    EntryKind kind;
    std::string target;
  };
  Tree& add(std::string const& path, Entry const& entry);

  std::map<std::string, Entry> entries_{{"", {EntryKind::folder, ""}}};
};

}  // namespace korvan::test
