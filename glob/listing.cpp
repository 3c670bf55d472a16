#include "glob/listing.hpp"

#include <utility>

#include "foundation/storage/vfs/storage_exception.hpp"
#include "foundation/storage/vfs/storage_system.hpp"
#include "path/path_access.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace korvan::io::internal {
namespace {

namespace vfs = foundation::storage::vfs;

bool isDotName(std::u16string const& name) {
  return !name.empty() && name.front() == u'.';
}

// Appends the listing's entries to `result`. `Entry` is what both kinds of element have: a getName.
template <class Entry>
void collect(std::vector<Path>& result, vfs::FolderListing<Entry> const& listing, bool showDotEntries) {
  constexpr std::size_t usualEntries = 16;  // growing to these would cost more than they do
  auto const end = listing.end();
  for (auto entry = listing.begin(); entry != end; ++entry) {
    auto&& name = entry->getName();  // one kind of element has its name, the other makes it
    if (!showDotEntries && isDotName(name)) continue;
    if (result.empty()) result.reserve(usualEntries);
    result.push_back(PathAccess::make(fl::filesystem::upath(std::forward<decltype(name)>(name))));
    utThrowIfInterruptPending();
  }
}

}  // namespace

std::vector<Path> listFolderEntries(vfs::Folder const& folder, std::u16string const& filter, bool foldersOnly,
                                    bool includeDotFiles) {
  bool const showDotEntries = includeDotFiles || isDotName(filter);
  std::vector<Path> result;
  try {
    if (foldersOnly) {
      collect(result, folder.listFolders(filter), showDotEntries);
    } else {
      collect(result, folder.listAll(filter), showDotEntries);
    }
  } catch (vfs::Exception const&) {
    return {};  // to a search, a folder that can't be read is an empty one
  }
  return result;
}

std::vector<Path> matchWildcardSegment(Path const& segment, Path const& folder, bool foldersOnly,
                                       bool includeDotFiles) {
  auto const storage = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
  return listFolderEntries(vfs::Folder(folder.toIRI(), storage), segment.string(false), foldersOnly, includeDotFiles);
}

}  // namespace korvan::io::internal
