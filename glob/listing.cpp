#include "glob/listing.hpp"

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

using EntryIterator = vfs::FolderListing<vfs::ListEntry>::Iterator;
using FolderIterator = vfs::FolderListing<vfs::Folder>::Iterator;

std::u16string const& nameOf(EntryIterator const& entry) {
  return entry->getName();
}
std::u16string nameOf(FolderIterator const& folder) {
  return folder.getName();
}

ListedKind kindOf(EntryIterator const& entry) {
  return listedKind(entry->getKind());
}
ListedKind kindOf(FolderIterator const& /*folder*/) {
  return ListedKind::folder;
}

template <class Entry>
void addNames(EntryNames& names, vfs::FolderListing<Entry> const& listing, bool showDotEntries) {
  auto const end = listing.end();
  for (auto entry = listing.begin(); entry != end; ++entry) {
    auto const& name = nameOf(entry);
    if (!showDotEntries && isDotName(name)) continue;
    names.add(name, kindOf(entry));
    utThrowIfInterruptPending();
  }
}

}  // namespace

void listEntryNames(EntryNames& names, vfs::Folder const& folder, std::u16string const& filter, bool foldersOnly,
                    bool includeDotFiles) {
  bool const showDotEntries = includeDotFiles || isDotName(filter);
  names.clear();
  try {
    if (foldersOnly) {
      addNames(names, folder.listFolders(filter), showDotEntries);
    } else {
      addNames(names, folder.listAll(filter), showDotEntries);
    }
  } catch (vfs::Exception const&) {
    names.clear();  // a search treats an unreadable folder as empty
  }
}

std::vector<Path> listFolderEntries(vfs::Folder const& folder, std::u16string const& filter, bool foldersOnly,
                                    bool includeDotFiles) {
  EntryNames names;
  listEntryNames(names, folder, filter, foldersOnly, includeDotFiles);
  std::vector<Path> entries;
  entries.reserve(names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    entries.push_back(PathAccess::make(fl::filesystem::upath(std::u16string(names[i]))));
  }
  return entries;
}

std::vector<Path> matchWildcardSegment(Path const& segment, Path const& folder, bool foldersOnly,
                                       bool includeDotFiles) {
  auto const storage = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
  return listFolderEntries(vfs::Folder(folder.toIRI(), storage), segment.string(false), foldersOnly, includeDotFiles);
}

}  // namespace korvan::io::internal
