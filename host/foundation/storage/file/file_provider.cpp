#include "foundation/storage/file/file_provider.hpp"

#include <array>
#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::file {
namespace {

using vfs::AbsoluteIRI;
using vfs::EntryKind;
using vfs::FolderIdentity;
using vfs::PathKind;

class Descriptor {
 public:
  explicit Descriptor(int value) noexcept : value_(value) {}
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }
  Descriptor(Descriptor const&) = delete;
  Descriptor& operator=(Descriptor const&) = delete;
  int get() const noexcept { return value_; }

 private:
  int value_;
};

// The path by which the system knows the location; empty for one that it can't know, since a name ends at its first
// NUL.
std::string systemPath(AbsoluteIRI const& location) {
  std::string path = vfs::decodedPath(location);
  if (path.empty()) path = "/";
  if (path.find('\0') != std::string::npos) path.clear();
  return path;
}

bool namesNothing(int error) {
  return vfs::errorCodeOfErrno(error) == vfs::ErrorCode::notFound || error == ENAMETOOLONG;
}

// The result of a system call that a signal may cut short, as on a network's disk: made again, unless the signal was an
// interrupt.
template <class Call>
auto uninterrupted(Call call) {
  for (;;) {
    auto const result = call();
    if (result >= 0 || errno != EINTR) return result;
    utThrowIfInterruptPending();
  }
}

EntryKind kindOfType(unsigned char type) {
  switch (type) {
    case DT_DIR:
      return EntryKind::folder;
    case DT_LNK:
      return EntryKind::link;
    case DT_UNKNOWN:
      return EntryKind::unknown;
    default:
      return EntryKind::file;
  }
}

// One record of getdents64, whose layout is the kernel's (linux_dirent64); the C library's own reader hides the buffer
// and costs a copy.
struct DirectoryRecord {
  std::uint64_t inode;
  std::int64_t position;
  std::uint16_t length;
  std::uint8_t type;
};
constexpr std::size_t nameOffset = offsetof(DirectoryRecord, type) + 1;

}  // namespace

PathKind FileProvider::kind(AbsoluteIRI const& location) {
  std::string const path = systemPath(location);
  if (path.empty()) return PathKind::notFound;
  struct stat status = {};
  if (::stat(path.c_str(), &status) == 0) return S_ISDIR(status.st_mode) ? PathKind::isFolder : PathKind::isFile;
  int const error = errno;
  if (!namesNothing(error)) throw vfs::exceptionOfErrno(error, location);
  return ::lstat(path.c_str(), &status) == 0 ? PathKind::isFile : PathKind::notFound;
}

void FileProvider::list(AbsoluteIRI const& folder, std::string_view /*namePrefix*/, vfs::EntrySink& entries) {
  std::string const path = systemPath(folder);
  if (path.empty()) throw vfs::exceptionOfErrno(ENOENT, folder);
  Descriptor const descriptor(
      uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK); }));
  if (descriptor.get() < 0) throw vfs::exceptionOfErrno(errno, folder);
  alignas(DirectoryRecord) std::array<char, std::size_t{64} << 10> buffer;
  for (;;) {
    auto const filled =
        uninterrupted([&] { return ::syscall(SYS_getdents64, descriptor.get(), buffer.data(), buffer.size()); });
    if (filled < 0) throw vfs::exceptionOfErrno(errno, folder);
    if (filled == 0) return;
    for (char const* at = buffer.data(); at < buffer.data() + filled;) {
      DirectoryRecord record;
      std::memcpy(&record, at, nameOffset);
      entries.add(at + nameOffset, kindOfType(record.type));
      at += record.length;
    }
    utThrowIfInterruptPending();
  }
}

std::optional<FolderIdentity> FileProvider::identity(AbsoluteIRI const& folder) {
  std::string const path = systemPath(folder);
  struct stat status = {};
  if (path.empty() || ::stat(path.c_str(), &status) != 0)
    throw vfs::exceptionOfErrno(path.empty() ? ENOENT : errno, folder);
  return FolderIdentity{status.st_dev, status.st_ino};
}

}  // namespace foundation::storage::file
