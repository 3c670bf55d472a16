#include "support/temporary_folder.hpp"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/text.hpp"

namespace korvan::test {
namespace {

void check(bool done, std::string const& what) {
  if (!done) throw std::system_error(errno, std::generic_category(), what);
}

bool isFolder(std::string const& path) {
  struct stat status = {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::vector<std::string> namesIn(std::string const& folder) {
  std::vector<std::string> names;
  std::unique_ptr<DIR, int (*)(DIR*)> const stream(::opendir(folder.c_str()), ::closedir);
  while (dirent const* entry = stream ? ::readdir(stream.get()) : nullptr) {
    if (std::string_view const name = entry->d_name; name != "." && name != "..") names.emplace_back(name);
  }
  return names;
}

// Moves each sub-folder to the top before it is emptied, so that neither the path nor the stack grows with the depth of
// the tree.
void removeAll(std::string const& top) {
  std::size_t moved = 0;
  auto const moveUp = [&](std::string const& path) {
    ::chmod(path.c_str(), 0700);
    ::rename(path.c_str(), (top + "/" + std::to_string(moved++) + ".moved").c_str());
  };
  for (bool again = true; again;) {
    again = false;
    for (auto const& name : namesIn(top)) {
      std::string const path = top + "/" + name;
      if (!isFolder(path)) {
        ::unlink(path.c_str());
        continue;
      }
      ::chmod(path.c_str(), 0700);
      for (auto const& inner : namesIn(path)) {
        std::string const below = path + "/" + inner;
        if (isFolder(below)) {
          moveUp(below);
          again = true;
        } else {
          ::unlink(below.c_str());
        }
      }
      ::rmdir(path.c_str());
    }
  }
  ::rmdir(top.c_str());
}

}  // namespace

TemporaryFolder::TemporaryFolder(Place place) {
  char const* chosen = std::getenv("TMPDIR");
  path_ = place == Place::memory && isFolder("/dev/shm") ? "/dev/shm" : chosen != nullptr ? chosen : "/tmp";
  path_ += "/korvan-test-XXXXXX";
  check(::mkdtemp(path_.data()) != nullptr, path_);
  check(::chmod(path_.c_str(), 0755) == 0, path_);
}

TemporaryFolder::~TemporaryFolder() {
  removeAll(path_);
}

std::u16string TemporaryFolder::text() const {
  return toText(path_);
}

std::string TemporaryFolder::at(std::string_view path) const {
  for (std::size_t end = path.find('/'); end != std::string_view::npos; end = path.find('/', end + 1)) {
    std::string const folder = path_ + "/" + std::string(path.substr(0, end));
    check(::mkdir(folder.c_str(), 0755) == 0 || errno == EEXIST, folder);
  }
  return path_ + "/" + std::string(path);
}

void TemporaryFolder::addFile(std::string_view path) const {
  std::string const file = at(path);
  check(::mknod(file.c_str(), S_IFREG | 0644, 0) == 0, file);
}

void TemporaryFolder::addFolder(std::string_view path) const {
  std::string const folder = at(path);
  check(::mkdir(folder.c_str(), 0755) == 0 || errno == EEXIST, folder);
}

void TemporaryFolder::addLink(std::string_view path, std::string const& target) const {
  std::string const link = at(path);
  check(::symlink(target.c_str(), link.c_str()) == 0, link);
}

CurrentFolder::CurrentFolder(std::string const& folder) : previous_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
  check(previous_ >= 0, "current folder");
  check(::chdir(folder.c_str()) == 0, folder);
}

CurrentFolder::~CurrentFolder() {
  if (::fchdir(previous_) != 0) std::abort();
  ::close(previous_);
}

}  // namespace korvan::test
