#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

#include "cli/long_line.hpp"
#include "cli/match_filter.hpp"
#include "cli/name_format.hpp"
#include "cli/options.hpp"
#include "cli/output.hpp"
#include "cli/search.hpp"

namespace kglob {

/// What becomes of the matches: those that the command line asks for are counted and written in the form it asks for.
class MatchWriter {
 public:
  /// Throws `UsageError` for values that can't be understood. The options and the output must outlive this.
  MatchWriter(Options const& options, Output& output);

  kglob_fact_level neededFacts() const noexcept;

  /// Adds the matches of the search's current block to the output. Returns whether more are wanted.
  bool add(Search const& search, std::string_view block);

  /// Adds what comes after all matches.
  void finish();

  std::uint64_t count() const noexcept { return count_; }

 private:
  bool wantsMore() const noexcept {
    return !(options_.limit && count_ >= *options_.limit) && !(options_.quiet && count_ > 0);
  }
  void addLine(Match const& match);

  Options const& options_;
  Output& output_;
  MatchFilter filter_;
  NameFormat names_;
  MatchLocation location_;
  LongLine long_;
  std::unordered_set<std::string> seen_;  // for --unique
  std::uint64_t count_ = 0;
  bool takesBlocks_;  // every match as it is
};

}  // namespace kglob
