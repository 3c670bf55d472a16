#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"

namespace foundation::storage::vfs {

/// How densely keys lie among all possible keys, as one page of them shows: an estimate of where other pages begin,
/// which may be wrong. Names are read like numbers whose digits are, at each position, the characters that the page has
/// there and those of the same kind: so "f0999" is followed by "f1000", and "2024-12/x" by "2024-13". Pure text.
/// Internal to the session.
class KORVAN_HOST_EXPORT KeySpacing {
 public:
  /// Shows nothing.
  KeySpacing() = default;

  /// Learns from the paths of a page, which must be sorted.
  explicit KeySpacing(std::vector<std::string> const& paths);

  /// A path that is about so many pages after this one; empty if the page doesn't show what is there.
  std::string after(std::string_view path, double pages) const;

 private:
  struct Position {
    std::string characters;  // sorted
    double value;            // of one character's distance; all paths are between 0 and 1
  };

  double valueOf(std::string_view path) const;

  std::string prefix_;               // of all paths that it knows something of
  std::vector<Position> positions_;  // after the prefix
  double key_ = 0;                   // the distance from one path to the next
  double page_ = 0;                  // the distance from the page to the next
};

}  // namespace foundation::storage::vfs
