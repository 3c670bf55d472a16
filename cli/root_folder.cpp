#include "cli/root_folder.hpp"

#include <algorithm>
#include <string_view>

#include "fl/filesystem/operations.hpp"
#include "fl/filesystem/text.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/exists.hpp"

namespace kglob {
namespace {

namespace fs = fl::filesystem;
namespace vfs = foundation::storage::vfs;

/// The absolute path of the root folder; empty when the current folder is unknown.
std::u16string absolutePath(std::u16string const& rootFolder) {
  try {
    return fs::absolute(fs::upath(rootFolder), fs::upath()).native();
  } catch (fs::FsysExceptionBase const&) {
    return {};
  }
}

}  // namespace

bool isFolder(std::u16string const& rootFolder) {
  auto const storage = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
  vfs::AbsoluteIRI const location =
      vfs::hasIRIPrefix(rootFolder) ? vfs::AbsoluteIRI(rootFolder) : vfs::toAbsoluteIRI(u"file", fs::upath(rootFolder));
  return vfs::exists(location, storage) == vfs::PathKind::isFolder;
}

std::u16string asWritten(std::u16string const& path, std::u16string const& rootFolder) {
  std::u16string const root = absolutePath(rootFolder);
  if (root.empty() || !path.starts_with(root)) return path;
  std::u16string_view below = std::u16string_view(path).substr(root.size());
  if (below.empty()) return rootFolder.empty() ? u"." : rootFolder;
  if (below.front() != u'/' && root.back() != u'/') return path;
  below.remove_prefix(std::min(below.find_first_not_of(u'/'), below.size()));
  std::u16string text = rootFolder;
  fs::detail::concatenate_pathname(text, std::u16string(below), true);
  return text;
}

std::u16string absolutePatternHint(std::u16string const& pattern, std::u16string const& rootFolder) {
  bool const inStore = vfs::hasIRIPrefix(rootFolder) && vfs::AbsoluteIRI(rootFolder).scheme() != u"file";
  if (!inStore || vfs::hasIRIPrefix(pattern) || !fs::detail::is_absolute(pattern)) return {};
  return u"\"" + pattern + u"\" is searched in the store of the root folder; for the local disk write \"file://" +
         pattern + u"\"";
}

}  // namespace kglob
