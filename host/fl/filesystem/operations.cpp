#include "fl/filesystem/operations.hpp"

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <sys/stat.h>

#include "foundation/core/text/bytes.hpp"

namespace fl::filesystem {
namespace {

namespace text = foundation::core::text;

// The text as the bytes that system calls take.
std::string systemName(std::u16string const& path) {
  std::string name;
  if (path.find(u'\0') != std::u16string::npos || !text::appendBytes(name, path)) {
    throw FsysExceptionBase(path, ENOENT);
  }
  return name;
}

upath fromSystemName(std::string_view name) {
  return {text::fromBytes(name), true};
}

std::u16string currentFolder(std::u16string const& concerned) {
  std::error_code error;
  std::filesystem::path const folder = std::filesystem::current_path(error);
  if (error) throw FsysExceptionBase(concerned, error.value());
  return text::fromBytes(folder.native());
}

// Calls `resolve` with the path's system name and an error code, which becomes an exception of the path library.
template <class Resolve>
std::filesystem::path resolved(upath const& path, Resolve resolve) {
  std::error_code error;
  std::filesystem::path result = resolve(std::filesystem::path(systemName(path.native())), error);
  if (error) throw FsysExceptionBase(path.native(), error.value());
  return result;
}

// Without a trailing "/", which `weakly_canonical` leaves on a path that doesn't exist.
std::filesystem::path resolvedWhereItExists(upath const& path) {
  std::filesystem::path const result = resolved(absolute(path, {}), [](auto const& name, std::error_code& error) {
    return std::filesystem::weakly_canonical(name, error);
  });
  return result.has_filename() || !result.has_relative_path() ? result : result.parent_path();
}

struct stat statusOf(upath const& path) {
  struct stat status = {};
  if (::stat(systemName(path.native()).c_str(), &status) != 0) throw FsysExceptionBase(path.native(), errno);
  return status;
}

}  // namespace

upath absolute(upath const& path, upath const& base) {
  if (detail::is_absolute(path.native())) return path;
  std::u16string result;
  result.reserve(base.native().size() + path.native().size() + 1);
  result = base.native();
  if (!detail::is_absolute(result)) {
    std::u16string below = currentFolder(base.empty() ? path.native() : result);
    if (!result.empty()) detail::concatenate_pathname(below, result, base.flag());
    result = std::move(below);
  }
  if (!path.empty()) detail::concatenate_pathname(result, path.native(), path.flag());
  return {std::move(result), path.flag()};
}

upath canonical(upath const& path, upath const& base) {
  return fromSystemName(resolved(absolute(path, base), [](auto const& name, std::error_code& error) {
                          return std::filesystem::canonical(name, error);
                        }).native());
}

upath relative(upath const& path, upath const& base) {
  return fromSystemName(resolvedWhereItExists(path).lexically_relative(resolvedWhereItExists(base)).native());
}

bool equivalent(upath const& a, upath const& b) {
  struct stat const first = statusOf(a);
  struct stat const second = statusOf(b);
  return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace fl::filesystem
