#include "cli/failed_folders.hpp"

#include "cli/messages.hpp"
#include "cli/root_folder.hpp"
#include "fl/filesystem/text.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/conversion.hpp"

namespace kglob {
namespace {

namespace vfs = foundation::storage::vfs;

std::u16string shownLocation(vfs::AbsoluteIRI const& location, std::u16string const& pattern, Scope const& scope) {
  bool const local =
      location.getScheme() == u"file" && !vfs::hasIRIPrefix(pattern) && !vfs::hasIRIPrefix(scope.rootFolder);
  if (!local) return location.toString();
  std::u16string path = vfs::fromAbsoluteIRI(location).native();
  return fl::filesystem::detail::is_absolute(pattern) ? path : asWritten(path, scope.rootFolder);
}

}  // namespace

void FailedFolders::reportNew(std::u16string const& pattern) {
  auto const& notes = session_.notes();
  for (; notesSeen_ < notes.size(); ++notesSeen_) {
    report(shownLocation(notes[notesSeen_].getLocation(), pattern, scope_) + u": " +
           foundation::core::text::fromBytes(notes[notesSeen_].reason()));
  }
  auto const& failures = session_.failedListings();
  for (; seen_ < failures.size(); ++seen_) {
    if (seen_ >= maximumLines) continue;
    vfs::Exception const& failure = failures[seen_];
    report(u"cannot read " + shownLocation(failure.getLocation(), pattern, scope_) + u": " +
           foundation::core::text::fromBytes(failure.reason()));
  }
}

bool FailedFolders::finish() const {
  std::size_t const count = session_.failedListings().size();
  if (count > maximumLines) report("further unreadable folders: " + std::to_string(count - maximumLines));
  return count > 0;
}

}  // namespace kglob
