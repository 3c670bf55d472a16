#include "cli/progress.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include <sys/ioctl.h>
#include <unistd.h>

#include "foundation/core/threads/signals_blocked.hpp"

namespace kglob {
namespace {

using foundation::core::threads::MutexLock;
using namespace std::chrono_literals;
constexpr auto delay = 1s;
constexpr auto period = 200ms;
constexpr std::string_view eraseLine = "\r\x1B[K";

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

/// Whether standard error can show a line that is erased again.
bool isPossible() noexcept {
  if (isatty(STDERR_FILENO) != 1) return false;
  char const* const terminal = std::getenv("TERM");
  return terminal && *terminal && std::string_view(terminal) != "dumb";
}

}  // namespace

Progress::Progress(foundation::storage::vfs::Activity const& activity) : activity_(activity) {
  if (!isPossible()) return;
  try {
    // Signals are to end the system calls of the main thread.
    foundation::core::threads::SignalsBlocked const blocked;
    thread_ = std::thread([this] { run(); });
  } catch (std::system_error const&) {
    // The search goes on without a progress line.
  }
}

Progress::~Progress() {
  if (!thread_.joinable()) return;
  {
    MutexLock const lock(mutex_);
    end_ = true;
  }
  ended_.notify_one();
  thread_.join();
}

void Progress::run() {
  MutexLock lock(mutex_);
  bool shown = false;
  auto const ended = [this]() KORVAN_REQUIRES(mutex_) { return end_; };
  for (auto wait = std::chrono::milliseconds(delay); !ended_.wait_for(lock.forWaiting(), wait, ended); wait = period) {
    if (!inForeground()) continue;
    // No allocation: nothing could handle its failure on this thread.
    std::array<char, 128> line;
    int const size = std::snprintf(line.data(), line.size(), "\r\x1B[Kkglob: read %llu folders, %llu entries",
                                   static_cast<unsigned long long>(activity_.folders),
                                   static_cast<unsigned long long>(activity_.entries));
    show({line.data(), std::min(static_cast<std::size_t>(size), eraseLine.size() + widestLine())});
    shown = true;
  }
  if (shown) show(eraseLine);
}

}  // namespace kglob
