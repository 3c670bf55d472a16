#pragma once

#include <chrono>
#include <cstddef>

#include "foundation/core/host_export.hpp"

namespace foundation::storage::vfs {

/// How many reads a session has in flight ahead of what is requested. Begins at none, doubles while predictions hold,
/// and shrinks when they fail or when the system runs out of resources. Reads that wait, as on a network file system,
/// may be as many as the session's limit; reads that compute, no more than there are cores to spare. Internal to the
/// session.
class KORVAN_HOST_EXPORT ReadWindow {
 public:
  /// `cores`: how many the process may use. One of them is the caller's.
  explicit ReadWindow(std::size_t cores) noexcept : coresToSpare_(cores == 0 ? 0 : cores - 1) {}

  /// Measuring costs two system calls, so only one in so many reads is measured.
  static constexpr std::size_t measureEvery = 16;

  /// The number of cores that this process may use.
  static std::size_t availableCores() noexcept;

  /// What a read cost its thread: the time that passed, the time on a processor, and how often the thread gave up its
  /// processor to wait, which isn't what it does when other threads take the processor away.
  struct Measurement {
    std::chrono::nanoseconds passed;
    std::chrono::nanoseconds computed;
    long waits;

    Measurement operator-(Measurement const& before) const noexcept {
      return {passed - before.passed, computed - before.computed, waits - before.waits};
    }
  };
  void noteRead(Measurement const& read) noexcept;

  /// A requested read had been predicted. `mostReads` may be in flight at once, the caller's own included.
  void noteHit(std::size_t mostReads) noexcept;

  /// Predictions were wrong, or a read failed for a reason that says nothing about what it read.
  void shrink() noexcept { size_ /= 2, hits_ = 0; }

  /// Another search begins.
  void close() noexcept { size_ = 0, hits_ = 0; }

  /// The system has too few descriptors, too little memory or too few threads for so many reads.
  void limit(std::size_t reads) noexcept;

  /// The most reads in flight besides the caller's own.
  std::size_t size() const noexcept { return size_; }

  /// The most reads in flight or made, and not yet requested. Where reads compute, enough for a thread to be woken seldom,
  /// as each wake-up costs about as much as reading a local folder.
  std::size_t ahead() const noexcept { return size_ * (waits() ? 16 : 256); }

  /// Whether there are so many reads in flight that one more makes little difference.
  bool isWide() const noexcept { return size_ >= 8; }

  /// Whether many of the last reads waited most of the time, and for long enough to be worth a thread.
  bool waits() const noexcept { return shareOfWaiting_ > 0.25; }

 private:
  std::size_t coresToSpare_;
  std::size_t limit_ = SIZE_MAX;
  std::size_t size_ = 0;
  std::size_t hits_ = 0;       // since the size changed
  double shareOfWaiting_ = 0;  // among the last reads
};

}  // namespace foundation::storage::vfs
