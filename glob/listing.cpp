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

}  // namespace

MatchingEntries::MatchingEntries(vfs::Folder const& folder, std::u16string const& filter, bool foldersOnly,
                                 bool includeDotFiles)
    : showDotEntries_(includeDotFiles || isDotName(filter)) {
  try {
    if (foldersOnly) {
      cursor_ = folder.listFolders(filter).cursor();
    } else {
      cursor_ = folder.listAll(filter).cursor();
    }
  } catch (vfs::Exception const&) {
    cursor_.reset();  // a search treats an unreadable folder as empty
  }
}

bool MatchingEntries::next() {
  if (!cursor_) return false;
  if (atEntry_) utThrowIfInterruptPending();
  do {
    atEntry_ = cursor_->next();
  } while (atEntry_ && !showDotEntries_ && cursor_->isDotName());
  return atEntry_;
}

std::vector<Path> listFolderEntries(vfs::Folder const& folder, std::u16string const& filter, bool foldersOnly,
                                    bool includeDotFiles) {
  std::vector<Path> entries;
  for (MatchingEntries matching(folder, filter, foldersOnly, includeDotFiles); matching.next();) {
    entries.push_back(PathAccess::make(fl::filesystem::upath(matching.name())));
  }
  return entries;
}

std::vector<Path> matchWildcardSegment(Path const& segment, Path const& folder, bool foldersOnly,
                                       bool includeDotFiles) {
  auto const storage = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
  return listFolderEntries(vfs::Folder(folder.toIRI(), storage), segment.string(false), foldersOnly, includeDotFiles);
}

}  // namespace korvan::io::internal
