// Preloaded into a program, makes calls fail that the program makes after main() has begun: the call number FAULT_AT of
// the kind FAULT_CALL (open, getdents, stat, readlink, memory, thread), with the errno FAULT_ERROR, and all later ones
// too if FAULT_ON is set. Writes one byte to the descriptor FAULT_SEEN when the first of them fails. If UNTYPED is set,
// folders don't report the types of their entries.

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using Main = int (*)(int, char**, char**);
using ThreadBody = void* (*)(void*);

struct {
  char const* call = "";
  int error = 0;
  long at = 0;
  bool on = false;
  long seen = -1;
  bool untyped = false;
} settings;

long (*systemCall)(long, ...);
Main programMain;
std::atomic<bool> isInMain;
std::atomic<long> calls;

bool fails(char const* call) {
  if (!isInMain || std::strcmp(call, settings.call) != 0) return false;
  long const number = ++calls;
  if (number != settings.at && !(settings.on && number > settings.at)) return false;
  if (number == settings.at) systemCall(SYS_write, settings.seen, "x", 1L);
  errno = settings.error;
  return true;
}

template <class Function>
Function* next(char const* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int countedMain(int argc, char** argv, char** environment) {
  isInMain = true;
  return programMain(argc, argv, environment);
}

long numberOf(char const* variable) {
  char const* const text = std::getenv(variable);
  return text == nullptr ? -1 : std::strtol(text, nullptr, 10);
}

__attribute__((constructor)) void readSettings() {
  systemCall = next<long(long, ...)>("syscall");
  char const* const call = std::getenv("FAULT_CALL");
  settings = {call == nullptr ? "" : call, static_cast<int>(numberOf("FAULT_ERROR")),
              numberOf("FAULT_AT"),        std::getenv("FAULT_ON") != nullptr,
              numberOf("FAULT_SEEN"),      std::getenv("UNTYPED") != nullptr};
}

int statAt(int folder, char const* path, struct stat* status, int flags) {
  return fails("stat") ? -1 : static_cast<int>(systemCall(SYS_newfstatat, folder, path, status, flags));
}

int openAt(int folder, char const* path, int flags, va_list rest) {
  unsigned const mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0;
  return fails("open") ? -1 : static_cast<int>(systemCall(SYS_openat, folder, path, flags, mode));
}

void hideTypes(char* records, long size) {
  for (long at = 0; at < size;) {
    auto* const record = reinterpret_cast<dirent*>(records + at);  // of 64 bits, the layout is the kernel's
    record->d_type = DT_UNKNOWN;
    at += record->d_reclen;
  }
}

}  // namespace

#pragma GCC visibility push(default)
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-inconsistent-declaration-parameter-name)
extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);

int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*end)(), void (*unload)(), void* stack) {
  programMain = main;
  return next<decltype(__libc_start_main)>("__libc_start_main")(countedMain, argc, argv, init, end, unload, stack);
}

void* malloc(std::size_t size) {
  return fails("memory") ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
  return fails("memory") ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return fails("memory") ? nullptr : __libc_realloc(block, size);
}

int pthread_create(pthread_t* thread, pthread_attr_t const* attributes, ThreadBody body, void* argument) {
  return fails("thread") ? settings.error
                         : next<decltype(pthread_create)>("pthread_create")(thread, attributes, body, argument);
}

int open(char const* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  int const result = openAt(AT_FDCWD, path, flags, rest);
  va_end(rest);
  return result;
}
int openat(int folder, char const* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  int const result = openAt(folder, path, flags, rest);
  va_end(rest);
  return result;
}

int stat(char const* path, struct stat* status) {
  return statAt(AT_FDCWD, path, status, 0);
}
int lstat(char const* path, struct stat* status) {
  return statAt(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}
int fstat(int file, struct stat* status) {
  return statAt(file, "", status, AT_EMPTY_PATH);
}
int fstatat(int folder, char const* path, struct stat* status, int flags) {
  return statAt(folder, path, status, flags);
}
int statx(int folder, char const* path, int flags, unsigned mask, struct statx* status) {
  return fails("stat") ? -1 : static_cast<int>(systemCall(SYS_statx, folder, path, flags, mask, status));
}

ssize_t readlink(char const* path, char* target, std::size_t size) {
  return readlinkat(AT_FDCWD, path, target, size);
}
ssize_t readlinkat(int folder, char const* path, char* target, std::size_t size) {
  return fails("readlink") ? -1 : systemCall(SYS_readlinkat, folder, path, target, size);
}

long syscall(long number, ...) {
  va_list rest;
  va_start(rest, number);
  long arguments[6];
  for (long& argument : arguments) argument = va_arg(rest, long);
  va_end(rest);
  auto const& [a, b, c, d, e, f] = arguments;
  if (number == SYS_getdents64 && fails("getdents")) return -1;
  long const result = systemCall(number, a, b, c, d, e, f);
  if (number == SYS_getdents64 && settings.untyped)
    hideTypes(reinterpret_cast<char*>(b), result);  // NOLINT(performance-no-int-to-ptr)
  return result;
}
ssize_t getdents64(int folder, void* records, std::size_t size) {
  return syscall(SYS_getdents64, folder, records, size);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-inconsistent-declaration-parameter-name)
#pragma GCC visibility pop
