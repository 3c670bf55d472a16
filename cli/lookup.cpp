#include "cli/lookup.hpp"

#include "cli/search.hpp"

namespace kglob {

std::vector<Presence> lookUp(std::vector<std::string> const& patterns, std::string const& rootFolder) {
  std::vector<Presence> results;
  if (patterns.empty()) return results;
  Search search(patterns, {.rootFolder = rootFolder, .dotFiles = true});
  do {
    bool isPresent = false;
    while (!search.nextBlock([] {}).empty()) isPresent = true;
    results.push_back(isPresent ? Presence::present : search.error() != nullptr ? Presence::unknown : Presence::absent);
  } while (search.nextPattern());
  return results;
}

}  // namespace kglob
