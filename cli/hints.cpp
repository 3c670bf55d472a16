#include "cli/hints.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/locations.hpp"
#include "cli/lookup.hpp"

namespace kglob {
namespace {

/// The end of an IRI's scheme and authority with the "/" after them, or of an absolute path's first "/": where the
/// names begin.
std::size_t endOfRoot(std::string_view pattern) {
  if (!isIRI(pattern)) return std::min(pattern.find_first_not_of('/'), pattern.size());
  std::size_t const slash = pattern.find('/', pattern.find("://") + 3);
  return slash == std::string_view::npos ? pattern.size() : slash + 1;
}

/// The ends of the pattern's names, each without the "/" behind it.
std::vector<std::size_t> endsOfNames(std::string_view pattern) {
  std::vector<std::size_t> ends;
  for (std::size_t begin = endOfRoot(pattern); begin < pattern.size();) {
    std::size_t const end = std::min(pattern.find('/', begin), pattern.size());
    if (end > begin) ends.push_back(end);
    begin = end + 1;
  }
  return ends;
}

/// A pattern "file:/x" or "s3:/x".
std::string singleSlashHint(std::string const& pattern) {
  std::size_t const colon = pattern.find(":/");
  if (colon == std::string::npos || isIRI(pattern)) return {};
  std::string iri = pattern;
  iri.insert(colon + 1, pattern.starts_with("file:") ? "//" : "/");
  if (!isIRI(iri) || lookUp({pattern.substr(0, colon + 1)}, {})[0] != Presence::absent) return {};
  return "\"" + pattern + "\" is a local path; an IRI begins with two slashes after the colon: \"" + iri + "\"";
}

/// What other programs expand in a name, and kglob doesn't.
std::string expansionHint(std::string_view name, bool isFirst) {
  auto const has = [name](char const* characters) { return name.find_first_of(characters) != std::string_view::npos; };
  if (isFirst && name.starts_with('~')) return "\"~\" is not expanded here; a shell expands it outside of quotes";
  if (has("{") && has("}")) return "\"{}\" only matches itself; give one pattern for each alternative";
  if (has("[") && has("]")) return "\"[]\" only matches itself; the wildcards are * and **";
  if (has("?")) return "\"?\" only matches itself; the wildcards are * and **";
  return {};
}

/// A name that would have been expanded elsewhere, and that nothing here is called.
std::string unexpandedHint(std::string const& pattern, std::string const& rootFolder) {
  std::vector<std::size_t> const ends = endsOfNames(pattern);
  std::size_t begin = endOfRoot(pattern);
  for (std::size_t const end : ends) {
    std::string_view const name = std::string_view(pattern).substr(begin, end - begin);
    std::string hint = expansionHint(name, begin == 0);
    bool const isLast = end + 1 >= pattern.size();
    if (!hint.empty() && (isLast || lookUp({pattern.substr(0, end)}, rootFolder)[0] == Presence::absent)) return hint;
    begin = end + 1;
  }
  return {};
}

/// The first folder of the part before the wildcards that doesn't exist.
std::string missingFolderHint(std::string const& pattern, std::string const& rootFolder) {
  std::vector<std::string> folders;
  for (std::size_t const end : endsOfNames(pattern)) {
    std::string folder = pattern.substr(0, end);
    if (end == pattern.size() || folder.find('*') != std::string::npos) break;
    folders.push_back(folder + '/');
  }
  std::vector<Presence> const found = lookUp(folders, rootFolder);
  auto const missing = std::ranges::find_if_not(found, [](Presence each) { return each == Presence::present; });
  if (missing == found.end() || *missing != Presence::absent) return {};
  std::string const& folder = folders[static_cast<std::size_t>(missing - found.begin())];
  return "no folder " + folder.substr(0, folder.size() - 1);
}

}  // namespace

std::vector<std::string> hintsBeforeSearch(Options const& options) {
  std::vector<std::string> hints;
  if (options.rootFolders.size() > 1)
    hints.push_back("several root folders are given; only the last is searched: \"" + options.rootFolder() + "\"");
  for (std::string const& pattern : options.patterns)
    if (auto hint = absolutePatternHint(pattern, options.rootFolder()); !hint.empty()) hints.push_back(std::move(hint));
  return hints;
}

std::string hintAboutFolderOperand(Options const& options) {
  auto const& operands = options.patterns;
  bool const mayBeMeant = operands.size() > 1 && operands[0].find('*') != std::string::npos && !operands[1].empty() &&
                          !operands[1].ends_with('/') && operands[1].find('*') == std::string::npos;
  if (!mayBeMeant || lookUp({operands[1] + "/"}, options.rootFolder())[0] != Presence::present) return {};
  return "\"" + operands[1] + "\" is taken as a pattern; to search in that folder use -r \"" + operands[1] + "\"";
}

std::vector<std::string> missingStores(std::vector<std::string> const& unmatched) {
  std::vector<std::string> stores;
  for (std::string const& pattern : unmatched) {
    if (!isIRI(pattern)) continue;
    std::string store = pattern.substr(0, endOfRoot(pattern));
    if (!store.ends_with('/')) store += '/';
    bool const isNamed = store.find('*') == std::string::npos && store.find("://") + 3 < store.size() - 1;
    if (isNamed && std::ranges::find(stores, store) == stores.end()) stores.push_back(std::move(store));
  }
  std::vector<Presence> const found = lookUp(stores, {});
  std::vector<std::string> missing;
  for (std::size_t i = 0; i < found.size(); ++i)
    if (found[i] == Presence::absent) missing.push_back(stores[i]);
  return missing;
}

std::string hintWhenNothingMatched(std::vector<std::string> const& patterns, std::string const& rootFolder) {
  constexpr std::size_t few = 5;
  for (std::size_t i = 0; i < std::min(patterns.size(), few); ++i) {
    std::string const& pattern = patterns[i];
    if (pattern.empty()) return "an empty pattern matches nothing";
    if (auto hint = singleSlashHint(pattern); !hint.empty()) return hint;
    if (auto hint = unexpandedHint(pattern, rootFolder); !hint.empty()) return hint;
    if (auto hint = missingFolderHint(pattern, rootFolder); !hint.empty()) return hint;
  }
  return {};
}

}  // namespace kglob
