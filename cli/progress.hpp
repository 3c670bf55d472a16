#pragma once

#include <condition_variable>
#include <thread>

#include "foundation/core/threads/mutex.hpp"
#include "foundation/storage/vfs/read_session.hpp"

namespace kglob {

/// While it lives, a search that takes longer than a second shows on standard error how much the session has read so
/// far, in a line that is erased at the end. Only where standard error is a terminal that can do so (TERM is set and
/// not "dumb") and the process is in its foreground; elsewhere it costs one system call and shows nothing.
class Progress {
 public:
  explicit Progress(foundation::storage::vfs::Activity const& activity);
  ~Progress();
  Progress(Progress const&) = delete;
  Progress& operator=(Progress const&) = delete;

 private:
  void run();

  foundation::storage::vfs::Activity const& activity_;
  foundation::core::threads::Mutex mutex_;
  std::condition_variable ended_;
  bool end_ KORVAN_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace kglob
