#include "cli/progress.hpp"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

#include <sys/ioctl.h>
#include <unistd.h>

namespace kglob {
namespace {

using namespace std::chrono_literals;
constexpr auto delay = 1s;
constexpr auto period = 200ms;
constexpr std::string_view takeLineAway = "\r\x1B[K";

void show(std::string_view text) {
  [[maybe_unused]] auto const written = write(STDERR_FILENO, text.data(), text.size());
}

bool inForeground() noexcept {
  return tcgetpgrp(STDERR_FILENO) == getpgrp();
}

/// One column is left free, since some terminals wrap a full line.
std::size_t widestLine() {
  winsize size{};
  bool const known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  return known ? size.ws_col - std::size_t{1} : 79;
}

/// Starts a thread that no signal is delivered to: they are to end the system calls of the main thread.
template <class Run>
std::thread startWithoutSignals(Run run) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    std::thread thread(run);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
}

}  // namespace

bool Progress::possible() noexcept {
  if (isatty(STDERR_FILENO) != 1) return false;
  char const* const terminal = std::getenv("TERM");
  return terminal && *terminal && std::string_view(terminal) != "dumb";
}

Progress::Progress(foundation::storage::vfs::Activity const& activity) : activity_(activity) {
  if (!possible()) return;
  try {
    thread_ = startWithoutSignals([this] { run(); });
  } catch (std::system_error const&) {
    // A search needs no progress line.
  }
}

Progress::~Progress() {
  if (!thread_.joinable()) return;
  {
    std::lock_guard const lock(mutex_);
    end_ = true;
  }
  ended_.notify_one();
  thread_.join();
}

void Progress::run() {
  std::unique_lock lock(mutex_);
  bool shown = false;
  for (auto wait = std::chrono::milliseconds(delay); !ended_.wait_for(lock, wait, [this] { return end_; });
       wait = period) {
    if (!inForeground()) continue;
    std::string line = "kglob: read " + std::to_string(activity_.folders) + " folders, " +
                       std::to_string(activity_.entries) + " entries";
    line.resize(std::min(line.size(), widestLine()));
    show(std::string(takeLineAway) + line);
    shown = true;
  }
  if (shown) show(takeLineAway);
}

}  // namespace kglob
