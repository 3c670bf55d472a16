#include "foundation/storage/vfs/session/read_window.hpp"

#include <algorithm>
#include <chrono>

#include <sched.h>

namespace foundation::storage::vfs {
namespace {

// A search of a few folders isn't worth a thread, unless they are slow.
constexpr std::size_t hitsToStart = 32;
constexpr std::size_t slowHitsToStart = 2;

// The window doubles when each thread has made this many reads that were then requested; where reads wait, after one,
// as a thread that waits costs little.
constexpr std::size_t hitsToDouble = 4;

// Shorter waits aren't worth a thread. A tracer stops a thread at each system call, so many stops must be longer to be
// taken for waits for a disk or a network.
constexpr std::chrono::microseconds shortestWait(50);
constexpr std::chrono::microseconds shortestOfMany(200);
constexpr long many = 8;

}  // namespace

std::size_t ReadWindow::availableCores() noexcept {
  cpu_set_t cores;
  return ::sched_getaffinity(0, sizeof cores, &cores) == 0 ? static_cast<std::size_t>(CPU_COUNT(&cores)) : 1;
}

// Counts reads instead of adding up their times: on a busy machine, a read that meets a lock may wait longer than a
// hundred others take.
void ReadWindow::noteRead(Measurement const& read) noexcept {
  auto const waited = read.passed - read.computed;
  auto const shortest = read.waits > many ? shortestOfMany : shortestWait;
  bool const isWaiting = read.waits > 0 && waited > read.computed && waited / read.waits >= shortest;
  shareOfWaiting_ = (7 * shareOfWaiting_ + (isWaiting ? 1 : 0)) / 8;
}

void ReadWindow::noteHit(std::size_t mostReads) noexcept {
  std::size_t const byOthers = std::max<std::size_t>(mostReads, 1) - 1;
  std::size_t const most = std::min(limit_, waits() ? byOthers : std::min(byOthers, coresToSpare_));
  size_ = std::min(size_, most);
  ++hits_;
  bool const grows =
      hits_ >= (size_ == 0 ? (waits() ? slowHitsToStart : hitsToStart) : (waits() ? 1 : hitsToDouble) * size_);
  if (!grows) return;
  size_ = std::min(std::max<std::size_t>(2 * size_, 1), most);
  hits_ = 0;
}

void ReadWindow::limit(std::size_t reads) noexcept {
  limit_ = std::min(limit_, reads);
  size_ = std::min(size_, limit_);
}

}  // namespace foundation::storage::vfs
