#pragma once

#include <cstddef>
#include <string>

#include "cli/match.hpp"

namespace kglob {

/// The columns of `--long` before the name: kind, size and local time of the last change, "-" for what is unknown.
class LongLine {
 public:
  explicit LongLine(bool humanSizes) : humanSizes_(humanSizes), sizeWidth_(humanSizes ? 5 : 10) {}

  /// Adds the columns and a space. The size's column grows when a size doesn't fit.
  void append(std::string& line, kglob_facts const& facts);

 private:
  bool humanSizes_;
  std::size_t sizeWidth_;
};

}  // namespace kglob
