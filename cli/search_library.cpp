#include "cli/search_library.hpp"

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

#include <dlfcn.h>
#include <unistd.h>

namespace kglob {
namespace {

constexpr std::string_view fileName = KGLOB_LIBRARY_NAME;
constexpr std::string_view installedFolder = KGLOB_LIBRARY_FOLDER;  // relative to the program's folder

/// The folder of the running program, with "/" at its end.
std::string programFolder() {
  std::array<char, PATH_MAX> path;
  ssize_t const length = readlink("/proc/self/exe", path.data(), path.size());
  if (length < 0) throw LibraryError(std::string("cannot locate the kglob executable: ") + std::strerror(errno));
  std::string_view const program(path.data(), static_cast<std::size_t>(length));
  return std::string(program.substr(0, program.rfind('/') + 1));
}

/// The address of a function that the library must export. Closes the library and throws when it doesn't.
template <class Function>
Function exported(void* handle, std::string const& file, char const* symbol) {
  if (void* const address = dlsym(handle, symbol)) return reinterpret_cast<Function>(address);
  dlclose(handle);
  throw LibraryError(file + " is not the search library: it does not export " + symbol);
}

}  // namespace

std::string findLibraryFile() {
  std::string const folder = programFolder();
  for (std::string_view const subfolder : {std::string_view(), installedFolder}) {
    std::string file = folder;
    (file += subfolder) += fileName;
    if (access(file.c_str(), F_OK) == 0) return file;
  }
  throw LibraryError("cannot find " + std::string(fileName) + " in " + folder + " or " + folder +
                     std::string(installedFolder) + "; name it with --library FILE");
}

SearchLibrary::SearchLibrary(std::string const& file)
    : handle_(dlopen((file.find('/') == std::string::npos ? "./" + file : file).c_str(), RTLD_LAZY | RTLD_LOCAL)) {
  if (!handle_) throw LibraryError("cannot load the search library: " + std::string(dlerror()));
  builtin_ = exported<Builtin>(handle_, file, builtinSymbol);
  auto const initialize = exported<Hook>(handle_, file, "KVInitialize_libqdkorvanautomationio");
  terminate_ = exported<Hook>(handle_, file, "KVTerminate_libqdkorvanautomationio");
  initialize();
}

SearchLibrary::~SearchLibrary() {
  terminate_();
  dlclose(handle_);
}

}  // namespace kglob
