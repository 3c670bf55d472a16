#include "glob/walk.hpp"

#include <string>
#include <utility>

#include "foundation/storage/vfs/exists.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "foundation/storage/vfs/storage_system.hpp"
#include "glob/listing.hpp"
#include "path/path_access.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace korvan::io::internal {
namespace {

namespace vfs = foundation::storage::vfs;

constexpr char16_t wildcard = u'*';

bool hasWildcard(std::u16string const& text) {
  return text.find(wildcard) != std::u16string::npos;
}

bool isThere(PathKind kind) {
  return kind == PathKind::isFile || kind == PathKind::isFolder;
}

SegmentMatcher matcherOf(std::u16string const& segment) {
  if (!hasWildcard(segment)) return matchLiteralSegment;
  if (segment == u"**") return matchDoubleStarSegment;
  return matchWildcardSegment;
}

bool literalMatches(Path const& pattern, Path const& root, bool foldersOnly) {
  bool const noName = pattern.name().empty();
  if (noName && pattern.parent().empty() && !foldersOnly) return false;
  PathKind const kind = pathKind(pattern, root);
  return noName || foldersOnly ? kind == PathKind::isFolder : isThere(kind);
}

// The match put behind the folder that it was found in.
Path joined(Path const& folder, Path const& match) {
  std::u16string buffer;
  return folder / PathAccess::generic(match, buffer);
}

// Appends what is below the folder, each path behind `prefix`, which leads from the first folder of the descent to this
// one. The prefix goes down with the descent, so that each path is put together once, however deep it lies.
void descend(std::vector<Path>& result, vfs::Folder const& folder, Path const& prefix, bool foldersOnly,
             bool includeDotFiles) {
  std::vector<Path> entries = listFolderEntries(folder, u"*", foldersOnly, includeDotFiles);
  if (entries.empty()) return;
  Path const location(folder.getLocation());
  for (Path& entry : entries) {
    result.push_back(joined(prefix, entry));
    try {
      if (pathKind(entry, location) != PathKind::isFolder) continue;
      Path const below = result.back();
      descend(result, vfs::Folder(folder, PathAccess::string(std::move(entry))), below, foldersOnly, includeDotFiles);
    } catch (vfs::Exception const&) {
      continue;  // the entry stays a match; what is below it can't be told
    }
  }
}

}  // namespace

std::vector<Path> expandPattern(Path const& pattern, Path const& root, bool foldersOnly, bool includeDotFiles) {
  if (!hasWildcard(pattern.string(false))) {
    if (!literalMatches(pattern, root, foldersOnly)) return {};
    return {pattern};
  }
  utThrowIfInterruptPending();

  std::u16string const lastSegment = pattern.name();
  Path const parent = pattern.parent();
  Path const segment{fl::filesystem::upath(lastSegment)};
  if (parent.empty()) {
    return lastSegment == u"**" ? matchDoubleStarSegment(segment, root, foldersOnly, includeDotFiles)
                                : matchWildcardSegment(segment, root, foldersOnly, includeDotFiles);
  }

  // A parent that is the pattern itself is the root of an IRI: it has nothing to expand.
  bool const expandsParent = hasWildcard(parent.string(false)) && parent != pattern;
  std::vector<Path> const parents =
      expandsParent ? expandPattern(parent, root, true, includeDotFiles) : std::vector<Path>{parent};
  SegmentMatcher const matcher = matcherOf(lastSegment);
  std::vector<Path> result;
  for (Path const& folder : parents) {
    for (Path const& match : matcher(segment, absolute(folder, root), foldersOnly, includeDotFiles)) {
      result.push_back(joined(folder, match));
    }
  }
  return result;
}

PathKind pathKind(Path const& path, Path const& base) {
  try {
    auto const location = PathAccess::toIRI(absolute(path, base));
    return vfs::exists(location, Quindarel::KorvanStorageSystem::GetStorageSystemReference());
  } catch (vfs::Exception const& failure) {
    if (failure.getErrorCode() == static_cast<int>(vfs::ErrorCode::notFound)) return PathKind::notFound;
    throw;
  }
}

std::vector<Path> matchLiteralSegment(Path const& segment, Path const& folder, bool /*foldersOnly*/,
                                      bool /*includeDotFiles*/) {
  PathKind const kind = pathKind(segment, folder);
  if (segment.empty() ? kind != PathKind::isFolder : !isThere(kind)) return {};
  return {segment};
}

std::vector<Path> matchDoubleStarSegment(Path const& /*segment*/, Path const& folder, bool foldersOnly,
                                         bool includeDotFiles) {
  bool const standsThere = pathKind(folder, Path()) == PathKind::isFolder;
  auto const storage = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
  std::vector<Path> result = collectDescendants(vfs::Folder(folder.toIRI(), storage), foldersOnly, includeDotFiles);
  if (standsThere) result.insert(result.begin(), Path());
  return result;
}

std::vector<Path> collectDescendants(vfs::Folder const& folder, bool foldersOnly, bool includeDotFiles) {
  std::vector<Path> result;
  descend(result, folder, Path(), foldersOnly, includeDotFiles);
  return result;
}

}  // namespace korvan::io::internal
