#include "cli/hints.hpp"

#include <algorithm>
#include <optional>
#include <string_view>

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

/// The first folder of the part before the wildcards that doesn't exist. Of an IRI with an authority, that is asked for
/// first.
NoMatchHint missingFolderHint(std::string const& pattern, std::string const& rootFolder) {
  std::vector<std::string> folders;
  if (isIRI(pattern) && !pattern.starts_with("file:")) folders.push_back(pattern.substr(0, endOfRoot(pattern)));
  bool const hasRoot = !folders.empty();
  for (std::size_t const end : endsOfNames(pattern)) {
    bool const isFolder = end < pattern.size();
    std::string folder = pattern.substr(0, end);
    if (!isFolder || folder.find('*') != std::string::npos) break;
    folders.push_back(std::move(folder));
  }
  std::vector<std::string> asked = folders;
  for (std::string& folder : asked)
    if (!folder.ends_with('/')) folder += '/';
  std::vector<Presence> const found = lookUp(asked, rootFolder);
  auto const missing = static_cast<std::size_t>(
      std::ranges::find_if_not(found, [](Presence each) { return each == Presence::present; }) - found.begin());
  if (missing == found.size() || found[missing] != Presence::absent) return {};
  if (missing == 0 && hasRoot) return {"\"" + folders[0] + "\" does not exist", true};
  return {"no folder " + folders[missing]};
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
  if (operands.size() < 2 || operands[0].find('*') == std::string::npos) return {};
  for (std::size_t i = 1; i < operands.size(); ++i) {
    std::string const& operand = operands[i];
    if (operand.empty() || operand.ends_with('/') || operand.find('*') != std::string::npos) continue;
    if (lookUp({operand + "/"}, options.rootFolder())[0] == Presence::present)
      return "\"" + operand + "\" is taken as a pattern; to search in that folder use -r \"" + operand + "\"";
  }
  return {};
}

NoMatchHint hintWhenNothingMatched(std::vector<std::string> const& patterns, std::string const& rootFolder) {
  for (std::string const& pattern : patterns) {
    if (pattern.empty()) return {"an empty pattern matches nothing"};
    if (auto hint = singleSlashHint(pattern); !hint.empty()) return {std::move(hint)};
    if (auto hint = unexpandedHint(pattern, rootFolder); !hint.empty()) return {std::move(hint)};
    if (auto hint = missingFolderHint(pattern, rootFolder); !hint.text.empty()) return hint;
  }
  return {};
}

}  // namespace kglob
