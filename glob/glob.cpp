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

// Every run of "**" segments made one: more of them match nothing more, but would find each match many times.
std::u16string collapseDoubleStarRuns(std::u16string const& genericPattern) {
  static scl::regex::regex const doubleStarRunRegex(std::u16string_view(uR"((?<![^\/])(\*\*\/)+\*\*(?![^\/]))"), 0,
                                                    nullptr);
  std::u16string const replacement = u"**";
  auto const* const engine = doubleStarRunRegex.engine();
  return engine == nullptr ? std::u16string() : engine->replace(genericPattern, replacement);
}

}  // namespace

std::vector<std::u16string> glob(std::u16string const& pattern, std::u16string const& rootFolder,
                                 bool includeDotFiles) {
  Path const normalizedPattern(collapseDoubleStarRuns(Path(pattern).generic(false)));
  Path const root(rootFolder);
  bool const foldersOnly = endsWithSeparator(pattern);
  std::vector<Path> matches = expandPattern(normalizedPattern, root, foldersOnly, includeDotFiles);
  std::vector<std::u16string> texts;
  texts.reserve(matches.size());
  for (Path& match : matches) {
    if (match.empty()) continue;
    // Matches can be millions: none is held twice.
    texts.push_back(foldersOnly ? match.string(true) : PathAccess::string(std::move(match)));
    match = Path();
  }
  return texts;
}

}  // namespace korvan::io::internal
