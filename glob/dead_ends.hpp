#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace korvan::io::internal {

/// The places of a walk that are known to lead to no match: a path and the segment to be matched in it. With several "**" in a
/// pattern there are exponentially many ways to the same place; a place that gives nothing is searched only once.
class DeadEnds {
 public:
  bool contains(std::size_t segment, std::u16string const& path) const {
    auto const paths = paths_.find(segment);
    return paths != paths_.end() && paths->second.count(path) != 0;
  }

  void add(std::size_t segment, std::u16string const& path) { paths_[segment].insert(path); }

 private:
  std::unordered_map<std::size_t, std::unordered_set<std::u16string>> paths_;
};

}  // namespace korvan::io::internal
