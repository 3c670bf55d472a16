// measure OUTPUT COMMAND [ARGUMENT...]: runs the command with its standard output in the file OUTPUT, and prints its
// wall time in nanoseconds, its peak memory in KiB and its exit status. A separate, small program, since the peak
// memory of a process includes the memory of its parent until it executes its own program.
#include <chrono>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX leaves its declaration to the program

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: measure OUTPUT COMMAND [ARGUMENT...]\n", stderr);
    return 2;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, argv[1], O_WRONLY | O_CREAT | O_TRUNC, 0600);

  auto const start = std::chrono::steady_clock::now();
  pid_t child = 0;
  if (int const error = ::posix_spawnp(&child, argv[2], &actions, nullptr, argv + 2, environ); error != 0) {
    std::fprintf(stderr, "measure: %s: %s\n", argv[2], std::strerror(error));
    return 1;
  }
  int status = 0;
  rusage usage{};
  if (::wait4(child, &status, 0, &usage) != child) {
    std::perror("measure: wait4");
    return 1;
  }
  auto const wall = std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start);
  std::printf("%lld %ld %d\n", static_cast<long long>(wall.count()), usage.ru_maxrss,
              WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
  return 0;
}
