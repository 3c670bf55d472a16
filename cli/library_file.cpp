#include "cli/library_file.hpp"

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

#include <unistd.h>

#include "cli/search_library.hpp"

namespace kglob {
namespace {

constexpr std::string_view fileName = KGLOB_LIBRARY_NAME;
constexpr std::string_view installedFolder = KGLOB_LIBRARY_FOLDER;  // as seen from the program's folder

/// The folder of the running program, with "/" at its end.
std::string programFolder() {
  std::array<char, PATH_MAX> path;
  ssize_t const length = readlink("/proc/self/exe", path.data(), path.size());
  if (length < 0) throw LibraryError(std::string("cannot tell where kglob stands: ") + std::strerror(errno));
  std::string_view const program(path.data(), static_cast<std::size_t>(length));
  return std::string(program.substr(0, program.rfind('/') + 1));
}

}  // namespace

std::string findLibraryFile() {
  std::string const folder = programFolder();
  for (std::string_view const place : {std::string_view(), installedFolder}) {
    std::string file = folder;
    (file += place) += fileName;
    if (access(file.c_str(), F_OK) == 0) return file;
  }
  throw LibraryError("cannot find " + std::string(fileName) + " in " + folder + " or " + folder +
                     std::string(installedFolder) + "; name it by --library FILE");
}

}  // namespace kglob
