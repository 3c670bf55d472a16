#pragma once

#include <cstdio>
#include <exception>
#include <functional>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvan::test {

/// Runs the checks in a process of their own, whose rights and limits they may change; false when one failed or the
/// process died.
inline bool passesInChild(std::function<void()> const& checks) {
  std::fflush(nullptr);
  pid_t const child = ::fork();
  if (child == 0) {
    try {
      checks();
    } catch (std::exception const& failure) {
      ADD_FAILURE() << failure.what();
    }
    std::fflush(nullptr);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// As `passesInChild`, as a user who isn't exempt from permissions.
inline bool passesUnprivileged(std::function<void()> const& checks) {
  return passesInChild([&] {
    constexpr unsigned nobody = 65534;
    if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0)) ::_exit(3);
    checks();
  });
}

}  // namespace korvan::test
