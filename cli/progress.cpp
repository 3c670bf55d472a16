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
constexpr auto period = 200ms;
constexpr std::string_view eraseLine = "\r\x1B[K";

void write(std::string_view text) {
  [[maybe_unused]] auto const written = ::write(STDERR_FILENO, text.data(), text.size());
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

Progress::Progress(Search const& search) : search_(search), visibleFrom_(std::chrono::steady_clock::now() + delay) {
  if (!isPossible()) return;
  sharesTerminal_ = isatty(STDOUT_FILENO) == 1;
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
  while (!end_) {
    auto const now = std::chrono::steady_clock::now();
    bool const isDue = now >= visibleFrom_;
    if (isDue) show();
    ended_.wait_until(lock.forWaiting(), isDue ? now + period : visibleFrom_);
  }
  hide();
}

void Progress::show() {
  if (!inForeground()) return;
  kglob_progress const read = search_.progress();
  // No allocation: nothing could handle its failure on this thread.
  std::array<char, 128> line;
  int const size =
      std::snprintf(line.data(), line.size(), "\r\x1B[Kkglob: read %llu folders, %llu entries",
                    static_cast<unsigned long long>(read.folders), static_cast<unsigned long long>(read.entries));
  write({line.data(), std::min(static_cast<std::size_t>(size), eraseLine.size() + widestLine())});
  isShown_ = true;
}

void Progress::hide() {
  if (isShown_) write(eraseLine);
  isShown_ = false;
}

}  // namespace kglob
