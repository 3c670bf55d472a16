#include "glob/walk.hpp"

#include "foundation/storage/vfs/storage_system.hpp"
#include "glob/walker.hpp"
#include "path/path_access.hpp"

namespace korvan::io::internal {
namespace {

namespace vfs = foundation::storage::vfs;

void appendRest(std::vector<Path>& matches, Walker walker) {
  while (Path const* const match = walker.next()) matches.push_back(*match);
}

}  // namespace

std::vector<Path> expandPattern(Path const& pattern, Path const& root, bool foldersOnly, bool includeDotFiles) {
  std::vector<Path> matches;
  appendRest(matches, Walker(pattern, root, foldersOnly, includeDotFiles));
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
  appendRest(matches, Walker(vfs::Folder(folder.toIRI(), storage), foldersOnly, includeDotFiles));
  return matches;
}

std::vector<Path> collectDescendants(vfs::Folder const& folder, bool foldersOnly, bool includeDotFiles) {
  std::vector<Path> matches;
  appendRest(matches, Walker(folder, foldersOnly, includeDotFiles));
  return matches;
}

}  // namespace korvan::io::internal
