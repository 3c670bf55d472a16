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

/// A small file system in memory: the slow matcher searches it, and the in-memory provider serves it. Paths are bytes,
/// relative to its root; lookups follow ".", ".." and links as a disk does.
class Tree {
 public:
  /// Each also adds the folders above the entry, and returns the tree for chaining.
  Tree& addFile(std::string const& path) { return add(path, {EntryKind::file, ""}); }
  Tree& addFolder(std::string const& path) { return add(path, {EntryKind::folder, ""}); }
  /// `target` is a path from the tree's root.
  Tree& addLink(std::string const& path, std::string const& target) { return add(path, {EntryKind::link, target}); }

  /// The path with links, "." and ".." resolved; nothing if it doesn't exist or a link is broken.
  std::optional<std::string> resolve(std::string_view path, bool followLast = true, int links = 40) const;

  bool isFolder(std::string_view path) const { return resolve(std::string(path) + "/").has_value(); }

  using Entries = std::vector<std::pair<std::string, EntryKind>>;
  /// Everything below the folder, at any depth, by relative paths; links aren't followed.
  Entries below(std::string_view folder) const;

  /// The entries of the folder itself, in the order of their names.
  Entries children(std::string_view folder) const;

  /// Creates the same tree on disk.
  void writeTo(TemporaryFolder const& folder) const;

  /// The folder of a random tree's entries, deep enough that no ".." of a random pattern leaves the tree.
  static inline std::string const searchRoot = "t/t/t/t/t/t";

  /// A tree of at most `entries` entries below `searchRoot`, with names that are easily confused in patterns.
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
