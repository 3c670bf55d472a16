#include "korvan/io/glob.hpp"

#include <string_view>

#include "foundation/storage/vfs/absolute_iri.hpp"
#include "glob/walk.hpp"
#include "korvan/io/path.hpp"
#include "path/path_access.hpp"
#include "scl/regex/regex.hpp"

namespace korvan::io::internal {
namespace {

bool endsWithSeparator(std::u16string const& text) {
  if (text.empty()) return false;
  if (foundation::storage::vfs::hasIRIPrefix(text)) return text.back() == u'/';
  return text.back() == fl::filesystem::upath_constant::PATHNAME_SEPARATOR[0] ||
         text.back() == fl::filesystem::upath_constant::GENERIC_PATHNAME_SEPARATOR[0];
}

// Reduces each run of "**" segments to one: more of them match nothing more, but would find each match many times.
std::u16string collapseDoubleStarRuns(std::u16string const& genericPattern) {
  static scl::regex::regex const doubleStarRunRegex(std::u16string_view(uR"((?<![^\/])(\*\*\/)+\*\*(?![^\/]))"), 0,
                                                    nullptr);
  std::u16string const replacement = u"**";
  auto const* const engine = doubleStarRunRegex.engine();
  return engine == nullptr ? std::u16string() : engine->replace(genericPattern, replacement);
}

}  // namespace

void glob(std::u16string const& pattern, std::u16string const& rootFolder, bool includeDotFiles,
          MatchConsumer const& consumer) {
  Path const normalizedPattern(collapseDoubleStarRuns(Path(pattern).generic(false)));
  Path const root(rootFolder);
  bool const foldersOnly = endsWithSeparator(pattern);
  auto const giveText = [&](Path const& match) {
    if (match.empty()) return true;
    return foldersOnly ? consumer(match.string(true)) : consumer(PathAccess::text(match));
  };
  forEachMatch(normalizedPattern, root, foldersOnly, includeDotFiles, giveText);
}

std::vector<std::u16string> glob(std::u16string const& pattern, std::u16string const& rootFolder,
                                 bool includeDotFiles) {
  std::vector<std::u16string> texts;
  glob(pattern, rootFolder, includeDotFiles, [&texts](std::u16string_view match) {
    texts.emplace_back(match);
    return true;
  });
  return texts;
}

}  // namespace korvan::io::internal
