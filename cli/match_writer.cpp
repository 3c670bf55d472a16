#include "cli/match_writer.hpp"

#include <algorithm>

#include "cli/json_line.hpp"

namespace kglob {

MatchWriter::MatchWriter(Options const& options, Output& output)
    : options_(options),
      output_(output),
      filter_(options),
      names_(options, output.isTerminal() && !options.json),
      location_(options.rootFolder()),
      long_(options.humanSizes),
      takesBlocks_(neededFacts() == KGLOB_NO_FACTS && names_.isPlain() && !options.unique && !options.limit &&
                   !options.quiet && !options.count) {}

kglob_fact_level MatchWriter::neededFacts() const noexcept {
  if (options_.quiet || options_.count) return filter_.neededFacts();
  if (options_.longFormat || options_.json) return KGLOB_ALL_FACTS;
  return std::max(filter_.neededFacts(), names_.neededFacts());
}

bool MatchWriter::add(Search const& search, std::string_view block) {
  if (takesBlocks_) {
    output_.addMatches(block);
    ++count_;  // only whether there are any matters
    return true;
  }
  std::size_t index = 0;
  for (std::size_t end = 0; wantsMore() && (end = block.find('\0')) != std::string_view::npos; ++index) {
    Match match{block.substr(0, end), {}};
    block.remove_prefix(end + 1);
    if (neededFacts() != KGLOB_NO_FACTS) match.facts = search.facts(index);
    if (!filter_.accepts(match.facts)) continue;
    if (options_.unique && !seen_.emplace(match.path).second) continue;
    ++count_;
    if (!options_.quiet && !options_.count) addLine(match);
  }
  return wantsMore();
}

void MatchWriter::addLine(Match const& match) {
  output_.addLine([&](std::string& line) {
    if (options_.json) {
      std::string path = options_.absolute ? location_.absolute(match.path) : std::string(match.path);
      if (options_.decode) path = decoded(path);
      appendJson(line, path, location_.root(), match.facts);
      return;
    }
    if (options_.longFormat) long_.append(line, match.facts);
    names_.append(line, match);
  });
}

void MatchWriter::finish() {
  if (options_.count && !options_.quiet) output_.addLine([this](std::string& line) { line += std::to_string(count_); });
}

}  // namespace kglob
