#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "cli/options.hpp"
#include "cli/size_bound.hpp"
#include "kglob.h"

namespace kglob {

/// The conditions on a match's facts that the command line sets: `--type`, `--size`, `--changed-within` and
/// `--changed-before`.
class MatchFilter {
 public:
  /// Throws `UsageError` for a value that can't be understood.
  explicit MatchFilter(Options const& options);

  /// What `accepts` has to know.
  kglob_fact_level neededFacts() const noexcept;

  /// Whether the match meets all conditions. A size or time that is unknown meets none.
  bool accepts(kglob_facts const& facts) const;

 private:
  std::vector<std::uint32_t> kinds_;  // empty: all
  std::vector<SizeBound> sizes_;
  std::optional<std::int64_t> after_;
  std::optional<std::int64_t> before_;
};

}  // namespace kglob
