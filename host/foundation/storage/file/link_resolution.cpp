#include "foundation/storage/file/link_resolution.hpp"

#include <algorithm>
#include <climits>
#include <functional>
#include <set>
#include <string_view>
#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>

namespace foundation::storage::file {
namespace {

constexpr std::size_t mostLinks = 10000;

// A link and what remained to be resolved after it. The folder belongs to it, as a link may have several names.
using State = std::tuple<dev_t, ino_t, dev_t, ino_t, std::size_t>;

Descriptor openAt(int folder, char const* name, int flags) {
  return Descriptor(uninterrupted([&] { return ::openat(folder, name, O_PATH | O_CLOEXEC | flags); }));
}

// Takes the first component off the path. A final "/" counts as ".", since only a folder can have one.
std::string takeComponent(std::string& path) {
  std::size_t const start = std::min(path.find_first_not_of('/'), path.size());
  std::size_t const end = std::min(path.find('/', start), path.size());
  std::string component = start == end ? "." : path.substr(start, end - start);
  path.erase(0, end);
  return component;
}

}  // namespace

Resolved resolveLinks(std::string const& path, bool followLast) {
  std::set<State> followed;
  std::string rest = path;
  Descriptor at = openAt(AT_FDCWD, "/", 0);
  struct stat folder = {};
  if (at.get() < 0 || ::fstat(at.get(), &folder) != 0) return {Descriptor(), errno};
  while (!rest.empty()) {
    Descriptor next = openAt(at.get(), takeComponent(rest).c_str(), O_NOFOLLOW);
    struct stat status = {};
    if (next.get() < 0 || ::fstat(next.get(), &status) != 0) return {Descriptor(), errno};
    if (S_ISLNK(status.st_mode) && (followLast || !rest.empty())) {
      char target[PATH_MAX];
      auto const length = ::readlinkat(next.get(), "", target, sizeof target);
      if (length < 0) return {Descriptor(), errno};
      State const state{folder.st_dev, folder.st_ino, status.st_dev, status.st_ino, std::hash<std::string>()(rest)};
      rest.insert(0, target, static_cast<std::size_t>(length));
      // A link to something below itself makes the rest longer each time.
      bool const leadsBack = !followed.insert(state).second || rest.size() > std::size_t{2} * PATH_MAX;
      if (leadsBack) return {Descriptor(), ENOENT};
      if (followed.size() > mostLinks) return {Descriptor(), ELOOP};
      if (!rest.starts_with('/')) continue;
      next = openAt(AT_FDCWD, "/", 0);
      if (next.get() < 0 || ::fstat(next.get(), &status) != 0) return {Descriptor(), errno};
    }
    at = std::move(next);
    folder = status;
  }
  return {std::move(at), 0};
}

}  // namespace foundation::storage::file
