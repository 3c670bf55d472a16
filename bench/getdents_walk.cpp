// The least that a search of the current folder can cost: every folder below it is read once with getdents64, and the
// types in the listings are trusted. With --count no paths are built either.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "selection.hpp"

namespace {

class Walk {
 public:
  explicit Walk(korvan::bench::Selection const& selection) : selection_(selection) {}

  void folder(int parent, char const* name, std::size_t depth) {
    int const descriptor = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) return;
    if (buffers_.size() < depth) buffers_.emplace_back(std::size_t{32} << 10);
    // Moving a vector leaves its memory in place, so the pointer remains valid when deeper levels are added.
    char* const buffer = buffers_[depth - 1].data();
    std::size_t const size = buffers_[depth - 1].size();
    for (long bytes; (bytes = ::syscall(SYS_getdents64, descriptor, buffer, size)) > 0;) {
      for (long offset = 0; offset < bytes;) {
        auto const* const record = reinterpret_cast<dirent64 const*>(buffer + offset);
        offset += record->d_reclen;
        if (record->d_name[0] != '.') entry(descriptor, record->d_name, record->d_type == DT_DIR, depth);
      }
    }
    ::close(descriptor);
  }

  std::size_t count() const noexcept { return count_; }

 private:
  void entry(int parent, char const* name, bool isFolder, std::size_t depth) {
    ++count_;
    std::size_t const parentLength = path_.size();
    if (!selection_.countOnly) {
      path_.append(name);
      if (selection_.selects(path_, depth, isFolder)) {
        path_.push_back('\n');
        std::fwrite(path_.data(), 1, path_.size(), stdout);
        path_.pop_back();
      }
      path_.push_back('/');
    }
    if (isFolder && selection_.descends(depth)) folder(parent, name, depth + 1);
    path_.resize(parentLength);
  }

  korvan::bench::Selection const& selection_;
  std::vector<std::vector<char>> buffers_;  // one per depth
  std::string path_;
  std::size_t count_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  korvan::bench::Selection const selection = korvan::bench::selectionFromArguments(argc, argv);
  Walk walk(selection);
  walk.folder(AT_FDCWD, ".", 1);
  if (selection.countOnly) std::printf("%zu\n", walk.count());
  return std::fflush(stdout) == 0 ? 0 : 1;
}
