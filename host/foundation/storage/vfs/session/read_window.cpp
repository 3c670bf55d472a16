#include "foundation/storage/vfs/session/read_window.hpp"

#include <algorithm>

#include <sched.h>

namespace foundation::storage::vfs {
namespace {

// A search of a few folders isn't worth a thread, unless they are slow.
constexpr std::size_t hitsToStart = 32;
constexpr std::size_t slowHitsToStart = 4;

// The window doubles when each thread has read this many folders that were then requested.
constexpr std::size_t hitsToDouble = 4;

}  // namespace

std::size_t ReadWindow::availableCores() noexcept {
  cpu_set_t cores;
  return ::sched_getaffinity(0, sizeof cores, &cores) == 0 ? static_cast<std::size_t>(CPU_COUNT(&cores)) : 1;
}

// An average over the last reads, as part of a tree may be in the system's cache.
void ReadWindow::noteRead(Measurement read) noexcept {
  computed_ = computed_ * 7 / 8;
  waited_ = waited_ * 7 / 8;
  (read.waited ? waited_ : computed_) += read.time;
}

void ReadWindow::noteHit(std::size_t mostReads) noexcept {
  std::size_t const byOthers = std::max<std::size_t>(mostReads, 1) - 1;
  std::size_t const most = std::min(limit_, waits() ? byOthers : std::min(byOthers, coresToSpare_));
  size_ = std::min(size_, most);
  ++hits_;
  bool const grows =
      size_ == 0 ? hits_ >= hitsToStart || (hits_ >= slowHitsToStart && waits()) : hits_ >= hitsToDouble * size_;
  if (!grows) return;
  size_ = std::min(std::max<std::size_t>(2 * size_, 1), most);
  hits_ = 0;
}

void ReadWindow::limit(std::size_t reads) noexcept {
  limit_ = std::min(limit_, reads);
  size_ = std::min(size_, limit_);
}

}  // namespace foundation::storage::vfs
