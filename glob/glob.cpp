#include "korvan/io/glob.hpp"

#include <string_view>

#include "foundation/storage/vfs/absolute_iri.hpp"
#include "glob/walker.hpp"
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

struct GlobStream::State {
  bool foldersOnly;
  Walker walker;
  std::u16string text{};  // of the last match, where a separator had to be added
};

GlobStream::GlobStream(std::u16string const& pattern, std::u16string const& rootFolder, bool includeDotFiles) {
  Path const normalizedPattern(collapseDoubleStarRuns(Path(pattern).generic(false)));
  bool const foldersOnly = endsWithSeparator(pattern);
  state_ = std::make_unique<State>(
      State{foldersOnly, Walker(normalizedPattern, Path(rootFolder), foldersOnly, includeDotFiles)});
}

GlobStream::GlobStream(GlobStream&&) noexcept = default;
GlobStream& GlobStream::operator=(GlobStream&&) noexcept = default;
GlobStream::~GlobStream() = default;

std::optional<std::u16string_view> GlobStream::next() {
  while (Path const* const match = state_->walker.next()) {
    std::u16string const& text = PathAccess::text(*match);
    if (text.empty()) continue;
    if (!state_->foldersOnly) return text;
    return state_->text = match->string(true);
  }
  return std::nullopt;
}

std::vector<std::u16string> glob(std::u16string const& pattern, std::u16string const& rootFolder,
                                 bool includeDotFiles) {
  std::vector<std::u16string> texts;
  GlobStream stream(pattern, rootFolder, includeDotFiles);
  while (auto const match = stream.next()) texts.emplace_back(*match);
  return texts;
}

}  // namespace korvan::io::internal
