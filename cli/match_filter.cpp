#include "cli/match_filter.hpp"

#include <algorithm>
#include <ctime>
#include <string>

#include "cli/time_point.hpp"

namespace kglob {
namespace {

std::uint32_t kindOf(std::string const& type) {
  if (type == "f" || type == "file") return KGLOB_FILE;
  if (type == "d" || type == "dir" || type == "directory") return KGLOB_FOLDER;
  if (type == "l" || type == "symlink") return KGLOB_LINK;
  throw UsageError("--type: \"" + type + "\" is not one of f, d and l");
}

}  // namespace

MatchFilter::MatchFilter(Options const& options) {
  for (std::string const& type : options.types) kinds_.push_back(kindOf(type));
  for (std::string const& size : options.sizes) sizes_.emplace_back(size);
  std::int64_t const now = std::time(nullptr);
  if (!options.changedWithin.empty()) after_ = parseTime(options.changedWithin, now, "--changed-within");
  if (!options.changedBefore.empty()) before_ = parseTime(options.changedBefore, now, "--changed-before");
}

kglob_fact_level MatchFilter::neededFacts() const noexcept {
  if (!sizes_.empty() || after_ || before_) return KGLOB_ALL_FACTS;
  return kinds_.empty() ? KGLOB_NO_FACTS : KGLOB_KINDS;
}

bool MatchFilter::accepts(kglob_facts const& facts) const {
  if (!kinds_.empty() && std::ranges::find(kinds_, facts.kind) == kinds_.end()) return false;
  bool const hasSize = facts.kind == KGLOB_FILE && (facts.known & KGLOB_HAS_BYTES) != 0;
  if (!sizes_.empty() && !hasSize) return false;
  if (!std::ranges::all_of(sizes_, [&](SizeBound const& size) { return size.accepts(facts.bytes); })) return false;
  if ((after_ || before_) && (facts.known & KGLOB_HAS_TIME) == 0) return false;
  return (!after_ || facts.modified_seconds >= *after_) && (!before_ || facts.modified_seconds < *before_);
}

}  // namespace kglob
