#include "cli/failed_folders.hpp"

#include <algorithm>

#include "cli/messages.hpp"
#include "fl/filesystem/operations.hpp"
#include "fl/filesystem/text.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/conversion.hpp"

namespace kglob {
namespace {

namespace fs = fl::filesystem;
namespace vfs = foundation::storage::vfs;

/// The absolute text of the root folder that relative patterns are searched in; empty where it can't be told.
std::u16string absoluteRoot(Scope const& scope) {
  try {
    return fs::absolute(fs::upath(scope.rootFolder), fs::upath()).native();
  } catch (fs::FsysExceptionBase const&) {
    return {};
  }
}

/// The path of a folder below the root folder, as the user would write it; an absolute path elsewhere.
std::u16string asWritten(std::u16string const& path, Scope const& scope) {
  std::u16string const root = absoluteRoot(scope);
  if (root.empty() || !path.starts_with(root)) return path;
  std::u16string_view below = std::u16string_view(path).substr(root.size());
  if (below.empty()) return scope.rootFolder.empty() ? u"." : scope.rootFolder;
  if (below.front() != u'/' && root.back() != u'/') return path;
  below.remove_prefix(std::min(below.find_first_not_of(u'/'), below.size()));
  std::u16string text = scope.rootFolder;
  fs::detail::concatenate_pathname(text, std::u16string(below), true);
  return text;
}

std::u16string shownLocation(vfs::AbsoluteIRI const& location, std::u16string const& pattern, Scope const& scope) {
  bool const local =
      location.getScheme() == u"file" && !vfs::hasIRIPrefix(pattern) && !vfs::hasIRIPrefix(scope.rootFolder);
  if (!local) return location.toString();
  std::u16string path = vfs::fromAbsoluteIRI(location).native();
  return fs::detail::is_absolute(pattern) ? path : asWritten(path, scope);
}

}  // namespace

void FailedFolders::tellNew(std::u16string const& pattern) {
  auto const& failures = session_.failedListings();
  for (; seen_ < failures.size(); ++seen_) {
    if (seen_ >= most) continue;
    vfs::Exception const& failure = failures[seen_];
    tell(u"cannot read " + shownLocation(failure.getLocation(), pattern, scope_) + u": " +
         foundation::core::text::fromBytes(failure.reason()));
  }
}

bool FailedFolders::finish() const {
  std::size_t const count = session_.failedListings().size();
  if (count > most) tell("further folders that cannot be read: " + std::to_string(count - most));
  return count > 0;
}

}  // namespace kglob
