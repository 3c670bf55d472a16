#include "foundation/storage/file/link_resolution.hpp"

#include <algorithm>
#include <climits>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace foundation::storage::file {
namespace {

constexpr std::size_t maximumLinks = 10000;

// A link whose target is being resolved, which is the case while more than `after` bytes of the path remain. Its folder
// is part of its identity, since a link may have several names and its target may be relative to the folder.
struct FollowedLink {
  struct stat folder;
  struct stat link;
  std::size_t after;
};

bool sameFile(struct stat const& a, struct stat const& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

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

DescriptorOrError resolveLinks(std::string const& path, bool followLast) {
  std::vector<FollowedLink> followed;
  std::size_t links = 0;
  std::string rest = path;
  Descriptor at = openAt(AT_FDCWD, "/", 0);
  struct stat folder = {};
  if (at.get() < 0 || ::fstat(at.get(), &folder) != 0) return {Descriptor(), errno};
  while (!rest.empty()) {
    std::erase_if(followed, [&](FollowedLink const& link) { return link.after >= rest.size(); });
    Descriptor next = openAt(at.get(), takeComponent(rest).c_str(), O_NOFOLLOW);
    struct stat status = {};
    if (next.get() < 0 || ::fstat(next.get(), &status) != 0) return {Descriptor(), errno};
    if (S_ISLNK(status.st_mode) && (followLast || !rest.empty())) {
      char target[PATH_MAX];
      auto const length = ::readlinkat(next.get(), "", target, sizeof target);
      if (length < 0) return {Descriptor(), errno};
      // A link that leads back to itself leads nowhere.
      bool const leadsBack = std::any_of(followed.begin(), followed.end(), [&](FollowedLink const& link) {
        return sameFile(link.folder, folder) && sameFile(link.link, status);
      });
      if (leadsBack) return {Descriptor(), ENOENT};
      if (++links > maximumLinks) return {Descriptor(), ELOOP};
      followed.push_back({folder, status, rest.size()});
      rest.insert(0, target, static_cast<std::size_t>(length));
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
