// A library to preload, under which opening a folder takes as long as on a network file system or a cold disk:
//   KORVAN_FOLDER_DELAY_US=2000 LD_PRELOAD=build/release/bin/libslow_folders.so kglob '**'
// It delays opendir, fdopendir, and open and openat with O_DIRECTORY, each by that many microseconds.
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <thread>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>

namespace {

void delay() {
  static long const microseconds = [] {
    char const* const text = std::getenv("KORVAN_FOLDER_DELAY_US");
    return text == nullptr ? 0 : std::strtol(text, nullptr, 10);
  }();
  int const before = errno;
  if (microseconds > 0) std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
  errno = before;
}

template <class Function>
Function* next(Function* /*replaced*/, char const* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// The parameters of the C library's own declarations have reserved names.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name,bugprone-macro-parentheses)
extern "C" {

__attribute__((visibility("default"))) DIR* opendir(char const* path) {
  delay();
  return next(&opendir, "opendir")(path);
}

__attribute__((visibility("default"))) DIR* fdopendir(int folder) {
  delay();
  return next(&fdopendir, "fdopendir")(folder);
}

// The mode follows the flags only in calls that may create a file.
#define KORVAN_DELAYED_OPEN(name, parameters, arguments)              \
  __attribute__((visibility("default"))) int name parameters {        \
    if ((flags & O_DIRECTORY) != 0) delay();                          \
    mode_t mode = 0;                                                  \
    if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) { \
      va_list rest;                                                   \
      va_start(rest, flags);                                          \
      mode = va_arg(rest, mode_t);                                    \
      va_end(rest);                                                   \
    }                                                                 \
    return next(&name, #name) arguments;                              \
  }

KORVAN_DELAYED_OPEN(open, (char const* path, int flags, ...), (path, flags, mode))
KORVAN_DELAYED_OPEN(open64, (char const* path, int flags, ...), (path, flags, mode))
KORVAN_DELAYED_OPEN(openat, (int folder, char const* path, int flags, ...), (folder, path, flags, mode))
KORVAN_DELAYED_OPEN(openat64, (int folder, char const* path, int flags, ...), (folder, path, flags, mode))

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name,bugprone-macro-parentheses)
