#pragma once

#include <chrono>
#include <condition_variable>
#include <thread>

#include "cli/search.hpp"
#include "foundation/core/threads/mutex.hpp"

namespace kglob {

/// While it lives, a search that takes longer than a second shows on standard error how much it has read so far, in a
/// line that is erased at the end. Only where standard error is a terminal that can do so (TERM is set and not "dumb")
/// and the process is in its foreground; elsewhere it costs one system call and shows nothing. Where standard output is
/// a terminal too, the line appears only once no match has been written for a second.
class Progress {
 public:
  /// The search must outlive this.
  explicit Progress(Search const& search);
  ~Progress();
  Progress(Progress const&) = delete;
  Progress& operator=(Progress const&) = delete;

  /// Calls `write`, which writes matches, without a progress line between them.
  template <class Write>
  void whileHidden(Write write) {
    if (!sharesTerminal_) {
      write();
      return;
    }
    foundation::core::threads::MutexLock const lock(mutex_);
    hide();
    write();
    visibleFrom_ = std::chrono::steady_clock::now() + delay;
  }

 private:
  static constexpr std::chrono::seconds delay{1};

  void run();
  void show() KORVAN_REQUIRES(mutex_);
  void hide() KORVAN_REQUIRES(mutex_);

  Search const& search_;
  bool sharesTerminal_ = false;
  foundation::core::threads::Mutex mutex_;
  std::condition_variable ended_;
  bool end_ KORVAN_GUARDED_BY(mutex_) = false;
  bool isShown_ KORVAN_GUARDED_BY(mutex_) = false;
  std::chrono::steady_clock::time_point visibleFrom_ KORVAN_GUARDED_BY(mutex_);
  std::thread thread_;
};

}  // namespace kglob
