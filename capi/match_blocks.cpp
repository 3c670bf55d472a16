#include "capi/match_blocks.hpp"

#include <algorithm>
#include <stdexcept>

#include "foundation/core/text/bytes.hpp"

namespace kglob {

using foundation::core::threads::MutexLock;

bool MatchBlocks::add(std::u16string_view match) {
  MutexLock lock(mutex_);
  while (!isClosed_ && filling_.size() >= capacity) changed_.wait(lock.forWaiting());
  if (isClosed_) return false;
  std::size_t const before = filling_.size();
  try {
    if (!foundation::core::text::appendBytes(filling_, match)) throw std::invalid_argument("a match has no byte form");
    filling_ += '\0';
  } catch (...) {
    filling_.resize(before);
    throw;
  }
  if (before == 0) due_ = isFirst_ ? Clock::time_point::min() : Clock::now() + maxDelay;
  if (before == 0 || filling_.size() >= capacity) changed_.notify_one();
  return true;
}

void MatchBlocks::end() noexcept {
  MutexLock const lock(mutex_);
  hasEnded_ = true;
  changed_.notify_one();
}

bool MatchBlocks::isDue(Clock::time_point now) const {
  return hasEnded_ || filling_.size() >= capacity || (!filling_.empty() && now >= due_);
}

std::optional<std::string_view> MatchBlocks::next(std::optional<std::chrono::milliseconds> timeout) {
  auto now = Clock::now();
  auto const giveUp = timeout ? now + *timeout : Clock::time_point::max();
  MutexLock lock(mutex_);
  for (; !isDue(now); now = Clock::now()) {
    if (now >= giveUp) return std::nullopt;
    auto const until = filling_.empty() ? giveUp : std::min(due_, giveUp);
    if (until == Clock::time_point::max())
      changed_.wait(lock.forWaiting());
    else
      changed_.wait_until(lock.forWaiting(), until);
  }
  given_.clear();
  given_.swap(filling_);
  isFirst_ = false;
  changed_.notify_one();
  return given_;
}

void MatchBlocks::close() noexcept {
  MutexLock const lock(mutex_);
  isClosed_ = true;
  changed_.notify_one();
}

}  // namespace kglob
