#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace korvan::io::internal {

/// The points of a walk that are known to lead to no match: each is a path and the segment to be matched there. With
/// several "**" in a pattern there are exponentially many ways to reach the same point; one without matches is walked
/// only once.
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
