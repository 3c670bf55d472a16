#include "foundation/storage/file/file_provider.hpp"

#include <array>
#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "foundation/storage/file/link_resolution.hpp"
#include "foundation/storage/file/system_call.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::file {
namespace {

using vfs::AbsoluteIRI;
using vfs::EntryFacts;
using vfs::EntryKind;
using vfs::FolderIdentity;
using vfs::PathKind;

// Small enough for the stack of any thread; a larger one doesn't list large folders faster.
constexpr std::size_t listingBuffer = std::size_t{16} << 10;

// The location's path as system calls take it; empty if it contains NUL, where system calls would cut it short.
std::string systemPath(AbsoluteIRI const& location) {
  std::string path = vfs::decodedPath(location);
  if (path.empty()) path = "/";
  if (path.find('\0') != std::string::npos) path.clear();
  return path;
}

bool namesNothing(int error) {
  return vfs::errorCodeOfErrno(error) == vfs::ErrorCode::notFound || error == ENAMETOOLONG;
}

// The status of what exists at the path, or of the link itself where links aren't followed. Returns 0 or an `errno`
// value.
int getStatus(std::string const& path, bool followLast, struct stat& status) {
  int const flags = followLast ? 0 : AT_SYMLINK_NOFOLLOW;
  if (uninterrupted([&] { return ::fstatat(AT_FDCWD, path.c_str(), &status, flags); }) == 0) return 0;
  if (errno != ELOOP) return errno;
  DescriptorOrError const resolved = resolveLinks(path, followLast);
  if (resolved.error != 0) return resolved.error;
  return ::fstat(resolved.descriptor.get(), &status) == 0 ? 0 : errno;
}

DescriptorOrError openFolder(std::string const& path) {
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;
  Descriptor folder(uninterrupted([&] { return ::open(path.c_str(), flags); }));
  if (folder.get() < 0 && errno == ELOOP) {
    DescriptorOrError const resolved = resolveLinks(path, true);
    if (resolved.error != 0) return {Descriptor(), resolved.error};
    folder = Descriptor(uninterrupted([&] { return ::openat(resolved.descriptor.get(), ".", flags); }));
  }
  int const error = folder.get() < 0 ? errno : 0;
  return {std::move(folder), error};
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

// One record of getdents64, whose layout is the kernel's (linux_dirent64). The C library's own reader adds an
// allocation and a call for each entry.
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
  int error = getStatus(path, true, status);
  if (error != 0 && namesNothing(error)) error = getStatus(path, false, status);
  if (error == 0) return S_ISDIR(status.st_mode) ? PathKind::isFolder : PathKind::isFile;
  if (!namesNothing(error)) throw vfs::exceptionOfErrno(error, location);
  return PathKind::notFound;
}

void FileProvider::list(AbsoluteIRI const& folder, std::string_view /*namePrefix*/, vfs::EntrySink& entries) {
  std::string const path = systemPath(folder);
  if (path.empty()) throw vfs::exceptionOfErrno(ENOENT, folder);
  DescriptorOrError const opened = openFolder(path);
  if (opened.error != 0) throw vfs::exceptionOfErrno(opened.error, folder);
  alignas(DirectoryRecord) std::array<char, listingBuffer> buffer;
  for (;;) {
    auto const filled =
        uninterrupted([&] { return ::syscall(SYS_getdents64, opened.descriptor.get(), buffer.data(), buffer.size()); });
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
  int const error = path.empty() ? ENOENT : getStatus(path, true, status);
  if (error != 0) throw vfs::exceptionOfErrno(error, folder);
  return FolderIdentity{status.st_dev, status.st_ino};
}

std::optional<EntryFacts> FileProvider::facts(AbsoluteIRI const& location) {
  std::string path = systemPath(location);
  if (path.size() > 1 && path.ends_with('/')) path.pop_back();  // it would follow a link
  struct stat status = {};
  int const error = path.empty() ? ENOENT : getStatus(path, false, status);
  if (error != 0 && namesNothing(error)) return std::nullopt;
  if (error != 0) throw vfs::exceptionOfErrno(error, location);
  EntryKind const kind = S_ISDIR(status.st_mode)   ? EntryKind::folder
                         : S_ISLNK(status.st_mode) ? EntryKind::link
                                                   : EntryKind::file;
  return EntryFacts{
      .kind = kind,
      .size = static_cast<std::uint64_t>(status.st_size),
      .modified = vfs::Timestamp{status.st_mtim.tv_sec, static_cast<std::uint32_t>(status.st_mtim.tv_nsec)}};
}

}  // namespace foundation::storage::file
