#include "glob/walk.hpp"

#include "foundation/storage/vfs/storage_system.hpp"
#include "path/path_access.hpp"

namespace korvan::io::internal {
namespace {

namespace vfs = foundation::storage::vfs;

bool literalMatches(Path const& pattern, Path const& root, bool foldersOnly) {
  bool const noName = pattern.name().empty();
  if (noName && pattern.parent().empty() && !foldersOnly) return false;
  PathKind const kind = pathKind(pattern, root);
  return noName || foldersOnly ? kind == PathKind::isFolder : exists(kind);
}

Walker::Consumer appendTo(std::vector<Path>& matches) {
  return [&matches](Path const& match) {
    matches.push_back(match);
    return true;
  };
}

}  // namespace

void forEachMatch(Path const& pattern, Path const& root, bool foldersOnly, bool includeDotFiles,
                  Walker::Consumer const& consumer) {
  if (hasWildcard(PathAccess::text(pattern))) {
    Walker(root, foldersOnly, includeDotFiles, consumer).expand(PatternPlan(pattern));
  } else if (literalMatches(pattern, root, foldersOnly)) {
    consumer(pattern);
  }
}

std::vector<Path> expandPattern(Path const& pattern, Path const& root, bool foldersOnly, bool includeDotFiles) {
  std::vector<Path> matches;
  forEachMatch(pattern, root, foldersOnly, includeDotFiles, appendTo(matches));
  return matches;
}

std::vector<Path> matchLiteralSegment(Path const& segment, Path const& folder, bool /*foldersOnly*/,
                                      bool /*includeDotFiles*/) {
  PathKind const kind = pathKind(segment, folder);
  if (segment.empty() ? kind != PathKind::isFolder : !exists(kind)) return {};
  return {segment};
}

std::vector<Path> matchDoubleStarSegment(Path const& /*segment*/, Path const& folder, bool foldersOnly,
                                         bool includeDotFiles) {
  std::vector<Path> matches;
  if (pathKind(folder, Path()) == PathKind::isFolder) matches.emplace_back();
  auto const storage = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
  Walker(Path(), foldersOnly, includeDotFiles, appendTo(matches)).descend(vfs::Folder(folder.toIRI(), storage));
  return matches;
}

std::vector<Path> collectDescendants(vfs::Folder const& folder, bool foldersOnly, bool includeDotFiles) {
  std::vector<Path> matches;
  Walker(Path(), foldersOnly, includeDotFiles, appendTo(matches)).descend(folder);
  return matches;
}

}  // namespace korvan::io::internal
