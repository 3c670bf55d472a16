#include "foundation/storage/vfs/session/read_window.hpp"

#include <algorithm>

#include <sched.h>

namespace foundation::storage::vfs {
namespace {

// A search of a few folders isn't worth a thread, unless they are slow.
constexpr std::size_t hitsToStart = 32;
constexpr std::size_t slowHitsToStart = 2;

// The window doubles when each thread has made this many reads that were then requested; where reads wait, after one,
// as a thread that waits costs little.
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

void ReadWindow::noteHit(std::size_t providerLimit) noexcept {
  std::size_t const most = std::min(limit_, waits() ? providerLimit : std::min(providerLimit, coresToSpare_));
  size_ = std::min(size_, most);
  ++hits_;
  bool const grows =
      hits_ >= (size_ == 0 ? (waits() ? slowHitsToStart : hitsToStart) : (waits() ? 1 : hitsToDouble) * size_);
  if (!grows) return;
  size_ = std::min(std::max<std::size_t>(2 * size_, 1), most);
  hits_ = 0;
}

void ReadWindow::limit(std::size_t reads) noexcept {
  limit_ = reads;
  size_ = std::min(size_, limit_);
}

}  // namespace foundation::storage::vfs
