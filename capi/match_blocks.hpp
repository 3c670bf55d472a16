#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "capi/search_failure.hpp"
#include "foundation/core/threads/mutex.hpp"
#include "foundation/core/threads/thread_annotations.hpp"
#include "foundation/storage/vfs/entry_facts.hpp"

namespace kglob {

/// Passes the matches of one pattern after the other from the thread of a search to the thread that consumes them. The
/// search fills one block while the consumer looks at the other, and waits when its block is full. A block may hold the
/// matches of many patterns, since a pattern may have few or none; the consumer gets those of one pattern at a time.
class MatchBlocks {
 public:
  static constexpr std::size_t capacity = std::size_t{64} << 10;
  static constexpr std::chrono::milliseconds maxDelay{20};

  using Facts = foundation::storage::vfs::EntryFacts;

  /// Adds a match and a NUL, with its facts for a search that has any; waits while the block is full. False if the
  /// consumer has closed: then nothing was added. Throws `std::bad_alloc`, and `std::invalid_argument` for a text that
  /// no bytes stand for. For the search.
  bool add(std::u16string_view match, std::optional<Facts> facts = {});

  /// No further match of this pattern comes; what is added next belongs to the next one. Waits and throws as `add`. For
  /// the search.
  bool endPattern(std::optional<SearchFailure> error);

  /// Nothing further comes. If the last pattern wasn't ended there was no memory to do so. For the search.
  void end() noexcept;

  /// Matches of the current pattern or, if there are none, its end and what ended it: null if all were given.
  struct Step {
    std::string_view matches;
    kglob_failure const* error = nullptr;
  };

  /// The next step, as soon as the block is full, `maxDelay` has passed since something was added to it, or nothing
  /// further comes; the first one of all at once. Valid until the next call or `nextPattern`. Nothing if `timeout`
  /// passes before; none waits as long as it takes. At the end of a pattern each call returns that end. For the
  /// consumer.
  std::optional<Step> next(std::optional<std::chrono::milliseconds> timeout);

  /// The facts of the match with this index in the last step; null if there is none. For the consumer.
  Facts const* facts(std::size_t index) const noexcept;

  /// Leaves the end of a pattern that `next` returned. For the consumer.
  void nextPattern() noexcept { ++given_.endsPassed; }

  /// The consumer takes no further block. For the consumer.
  void close() noexcept;

 private:
  using Clock = std::chrono::steady_clock;

  struct PatternEnd {
    std::size_t offset;  // behind the pattern's last match
    std::size_t facts;   // how many there are up to there
    std::optional<SearchFailure> error;
  };
  struct Block {
    std::string matches;
    std::vector<Facts> facts;
    std::vector<PatternEnd> ends;
    std::size_t position = 0;
    std::size_t endsPassed = 0;

    std::size_t size() const noexcept {
      return matches.size() + facts.size() * sizeof(Facts) + ends.size() * sizeof(PatternEnd);
    }
  };

  bool isDue(Clock::time_point now) const KORVAN_REQUIRES(mutex_);
  template <class Append>
  bool append(Append appendTo);
  std::optional<Step> nextOfGiven();

  foundation::core::threads::Mutex mutex_;
  std::condition_variable changed_;  // only one of the two threads waits at a time
  Block filling_ KORVAN_GUARDED_BY(mutex_);
  Block given_;                                        // the consumer's alone
  kglob_failure givenError_{};                         // the consumer's alone
  Clock::time_point lastGiven_;                        // the consumer's alone
  Clock::time_point due_ KORVAN_GUARDED_BY(mutex_);    // when the block that is being filled must be given
  bool isFirst_ KORVAN_GUARDED_BY(mutex_) = true;      // no block has been given
  bool awaitsFirst_ KORVAN_GUARDED_BY(mutex_) = true;  // whether the consumer waits for a block to be begun
  bool hasEnded_ KORVAN_GUARDED_BY(mutex_) = false;
  bool isClosed_ KORVAN_GUARDED_BY(mutex_) = false;
};

}  // namespace kglob
