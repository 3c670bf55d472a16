#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace korvan::test {

class TemporaryFolder;

/// A folder, a file or a link of a `Tree`. Names are bytes; a map orders them by bytes.
struct Node {
  enum class Kind { file, folder, link };

  Kind kind = Kind::folder;
  std::uint64_t identity = 0;              ///< its own in a tree
  std::string target;                      ///< of a link: a path from the tree's root
  std::map<std::string, Node> children{};  ///< of a folder
};

/// A small file system as a plain tree: what a search is held against, and what the in-memory provider serves. Paths
/// are taken from its root;
/// ".", ".." and links are followed as a disk follows them.
class Tree {
 public:
  Tree();

  /// Each makes the folders above it too, and returns the tree, to be chained.
  Tree& addFile(std::string_view path);
  Tree& addFolder(std::string_view path);
  Tree& addLink(std::string_view path, std::string target);
  void remove(std::string_view path);

  /// What stands there, a link followed; null where nothing does or a link leads nowhere.
  Node const* find(std::string_view path) const;

  /// What stands there, a final link not followed; null where nothing does.
  Node const* findEntry(std::string_view path) const;

  bool isFolder(std::string_view path) const;

  /// Makes the same tree on disk.
  void writeTo(TemporaryFolder const& folder) const;

  /// Where a random tree's entries lie: so deep that no ".." of a pattern leads out of the tree.
  static constexpr std::string_view searchRoot = "t/t/t/t/t/t";

  /// A tree of at most `entries` entries below `searchRoot`, with names that patterns confuse easily.
  static Tree random(std::mt19937& random, std::size_t entries, bool links);

 private:
  Node& make(std::string_view path, Node::Kind kind);
  using Trail = std::vector<Node const*>;
  bool follow(Trail& trail, std::string_view path, int& linksLeft, bool followLast) const;

  Node root_;
  std::uint64_t made_ = 0;
};

}  // namespace korvan::test
