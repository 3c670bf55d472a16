// The threads that read ahead.

#include <algorithm>
#include <exception>

#include "foundation/core/threads/signals_blocked.hpp"
#include "foundation/storage/vfs/session/current_session.hpp"
#include "foundation/storage/vfs/session/read_ahead.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::vfs {
namespace {

using core::threads::MutexLock;
constexpr MutexLock::Spinning spinning;

// A thread whose reads compute is woken when it can make this many, as each wake-up costs a system call.
constexpr std::size_t worthWaking = 8;

}  // namespace

void ReadAhead::startWorkers() {
  std::size_t wanted = 0;
  bool knowsCache = false;
  {
    MutexLock const lock(mutex_, spinning);
    wanted = window_.size();
    knowsCache = known_.has_value();
  }
  if (wanted != 0 && !knowsCache) {
    auto known = cache_.knownFolders();
    MutexLock const lock(mutex_);
    known_ = std::move(known);
  }
  while (workers_.size() < wanted) {
    core::threads::SignalsBlocked const blocked;
    try {
      workers_.emplace_back([this] { runWorker(); });
    } catch (std::exception const&) {
      MutexLock const lock(mutex_);
      window_.limit(workers_.size());  // the system has no more threads to spare
      return;
    }
  }
}

void ReadAhead::runWorker() noexcept {
  utInterruptScope const interruptedByClosing(&closing_);
  ActivityScope const countedForTheSession(activity_);
  Work work;
  for (std::size_t made = 0;; ++made) {
    {
      MutexLock lock(mutex_, spinning);
      if (work) finish(work);
      while (!(work = takeWork())) {
        if (closing_) return;
        ++idleWorkers_;
        while (wakeUps_ == 0 && !closing_) workersWake_.wait(lock.forWaiting());
        if (wakeUps_ != 0) --wakeUps_;
      }
      ++inFlight_;
      wakeWorkers();
    }
    bool const isMeasured = made % ReadWindow::measureEvery == 0;
    if (work.page) work.page->make(isMeasured);
    if (work.read != nullptr) work.read->prefetch(visibility_, isMeasured);
  }
}

ReadAhead::Work ReadAhead::takeWork() noexcept {
  Work work;
  if (inFlight_ >= window_.size() || closing_) return work;
  work.page = takePage();
  if (!work.page) work.read = takeNext();
  return work;
}

void ReadAhead::finish(Work& work) noexcept {
  if (work.page) finish(*work.page);
  if (work.read != nullptr) finish(*work.read);
  --inFlight_;
}

void ReadAhead::wakeWorkers() noexcept {
  if (idleWorkers_ == 0 || inFlight_ >= window_.size()) return;
  std::size_t const worth = window_.waits() ? 1 : worthWaking;
  std::size_t most = std::min(idleWorkers_, window_.size() - inFlight_);
  if (!mayFetchPages()) {
    if (pending_.size() < worth || !hasRoom(worth)) return;
    most = std::min(most, pending_.size() / worth);
  }
  // A worker that is woken no longer counts as idle, so that it isn't woken again before it runs.
  idleWorkers_ -= most;
  wakeUps_ += most;
  for (std::size_t i = 0; i < most; ++i) workersWake_.notify_one();
}

}  // namespace foundation::storage::vfs
