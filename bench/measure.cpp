// measure OUTPUT COMMAND [ARGUMENT...]: runs the command with its standard output in the file OUTPUT, and prints its
// wall time in nanoseconds, its peak memory in KiB and its exit status. With "--first" for OUTPUT the output goes to a
// pipe that is closed after the first byte, as by head -c1; the first figure is then the time to that byte, and a fourth
// one is the wall time. A separate, small program, since the peak memory of a process includes the memory of its parent
// until it executes its own program.
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX leaves its declaration to the program

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: measure OUTPUT|--first COMMAND [ARGUMENT...]\n", stderr);
    return 2;
  }
  bool const first = argv[1] == std::string_view("--first");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  std::array<int, 2> ends{};
  if (!first) {
    posix_spawn_file_actions_addopen(&actions, 1, argv[1], O_WRONLY | O_CREAT | O_TRUNC, 0600);
  } else if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
    posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
  } else {
    std::perror("measure: pipe2");
    return 1;
  }

  auto const start = std::chrono::steady_clock::now();
  auto const passed = [start] {
    auto const time = std::chrono::steady_clock::now() - start;
    return static_cast<long long>(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count());
  };
  pid_t child = 0;
  if (int const error = ::posix_spawnp(&child, argv[2], &actions, nullptr, argv + 2, environ); error != 0) {
    std::fprintf(stderr, "measure: %s: %s\n", argv[2], std::strerror(error));
    return 1;
  }
  long long toFirst = 0;
  if (first) {
    ::close(ends[1]);
    char byte = 0;
    if (::read(ends[0], &byte, 1) == 1) toFirst = passed();
    ::close(ends[0]);
  }
  int status = 0;
  rusage usage{};
  if (::wait4(child, &status, 0, &usage) != child) {
    std::perror("measure: wait4");
    return 1;
  }
  int const ended = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  if (first)
    std::printf("%lld %ld %d %lld\n", toFirst, usage.ru_maxrss, ended, passed());
  else
    std::printf("%lld %ld %d\n", passed(), usage.ru_maxrss, ended);
  return 0;
}
