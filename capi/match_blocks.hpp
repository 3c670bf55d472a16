#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/core/threads/mutex.hpp"
#include "foundation/core/threads/thread_annotations.hpp"

namespace kglob {

/// Passes matches from the thread of a search to the thread that consumes them, a block at a time. The search fills one
/// block while the consumer looks at the other, and waits when its block is full.
class MatchBlocks {
 public:
  static constexpr std::size_t capacity = std::size_t{64} << 10;
  static constexpr std::chrono::milliseconds maxDelay{20};

  /// Adds a match and a NUL; waits while the block is full. False if the consumer has closed: then nothing was added.
  /// Throws `std::bad_alloc`, and `std::invalid_argument` for a text that no bytes stand for. For the search.
  bool add(std::u16string_view match);

  /// No further match comes. For the search.
  void end() noexcept;

  /// The next block, as soon as it is full, `maxDelay` has passed since its first match, or no further match comes; the
  /// first match of all at once. Valid until the next call; empty at the end. Nothing if `timeout` passes before; none
  /// waits as long as it takes. For the consumer.
  std::optional<std::string_view> next(std::optional<std::chrono::milliseconds> timeout);

  /// The consumer takes no further block. For the consumer.
  void close() noexcept;

 private:
  using Clock = std::chrono::steady_clock;
  bool isDue(Clock::time_point now) const KORVAN_REQUIRES(mutex_);

  foundation::core::threads::Mutex mutex_;
  std::condition_variable changed_;  // only one of the two threads waits at a time
  std::string filling_ KORVAN_GUARDED_BY(mutex_);
  std::string given_;                                // the consumer's alone
  Clock::time_point due_ KORVAN_GUARDED_BY(mutex_);  // when the block that is being filled must be given
  bool isFirst_ KORVAN_GUARDED_BY(mutex_) = true;    // no block has been given
  bool hasEnded_ KORVAN_GUARDED_BY(mutex_) = false;
  bool isClosed_ KORVAN_GUARDED_BY(mutex_) = false;
};

}  // namespace kglob
