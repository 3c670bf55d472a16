#include "cli/process_setup.hpp"

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <new>
#include <thread>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include "cli/exit_status.hpp"
#include "cli/messages.hpp"

namespace kglob {
namespace {

std::terminate_handler inherited = nullptr;

/// Whether the process ends because it has no memory. Without memory for the exception itself, none is active.
bool isOutOfMemory() {
  if (!std::current_exception()) {
    void* volatile const probe = std::malloc(1);  // volatile, as compilers may leave out an unused allocation
    std::free(probe);
    return !probe;
  }
  try {
    throw;
  } catch (std::bad_alloc const&) {
    return true;
  } catch (...) {
    return false;
  }
}

/// Reports a lack of memory that none of main's handlers can catch.
[[noreturn]] void onTerminate() {
  if (isOutOfMemory()) {
    reportOutOfMemory();
    _exit(failed);
  }
  inherited();
  std::abort();
}

/// Runs before the initialization of the program's global objects, which may allocate.
[[gnu::constructor(101)]] void handleTerminate() {
  inherited = std::set_terminate(onTerminate);
}

}  // namespace

void reserveStandardDescriptors() noexcept {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) open("/dev/null", O_RDONLY);
}

void shareHeap() noexcept {
  if (std::thread::hardware_concurrency() <= 2) mallopt(M_ARENA_MAX, 1);
}

}  // namespace kglob
