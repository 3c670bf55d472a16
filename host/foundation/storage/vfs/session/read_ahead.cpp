#include "foundation/storage/vfs/session/read_ahead.hpp"

#include <cerrno>
#include <string>
#include <utility>

#include "foundation/core/threads/signals_blocked.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"

namespace foundation::storage::vfs {
namespace {

// A search of a few folders isn't worth a thread.
constexpr std::size_t hitsToStart = 32;

// This many misses in a row mean that the descent has ended; fewer may come from a link or a dot folder that it enters.
constexpr std::size_t missesToAbandon = 32;

// The window: how much may be prefetched and not yet requested.
constexpr std::size_t windowFolders = 256;
constexpr std::size_t windowMemory = std::size_t{4} << 20;

// The helper is woken when it can read this many folders, as each wake-up costs a system call.
constexpr std::size_t worthWaking = 8;

// How often a thread checks for an imminent event before it sleeps: going to sleep and being woken takes longer than
// reading a local folder.
constexpr int spins = 50;

void lockSpinning(std::unique_lock<std::mutex>& lock) {
  for (int i = 0; i < spins; ++i) {
    if (lock.try_lock()) return;
    std::this_thread::yield();
  }
  lock.lock();
}

// Releases the lock while it lives.
class Unlocked {
 public:
  explicit Unlocked(std::unique_lock<std::mutex>& lock) : lock_(lock) { lock_.unlock(); }
  ~Unlocked() { lockSpinning(lock_); }
  Unlocked(Unlocked const&) = delete;
  Unlocked& operator=(Unlocked const&) = delete;

 private:
  std::unique_lock<std::mutex>& lock_;
};

bool lacksResources(int systemError) {
  return systemError == EMFILE || systemError == ENFILE || systemError == ENOMEM;
}

bool isSameFolder(AbsoluteIRI const& a, AbsoluteIRI const& b) {
  return KeyEqual()(keyOf(a), keyOf(b));
}

}  // namespace

ReadAhead::~ReadAhead() {
  Lock lock(mutex_);
  stopHelper(lock);
}

std::shared_ptr<FolderSnapshot> ReadAhead::read(std::shared_ptr<Provider> const& provider,
                                                AbsoluteIRI const& location) {
  Lock lock(mutex_, std::defer_lock);
  lockSpinning(lock);
  if (provider != provider_) {
    abandonDescent(lock);
    provider_ = provider;
  }
  awaitHelper(lock, location);
  std::optional<Outcome> outcome = takePrefetched(location);
  if (!outcome) outcome = readRequested(lock, location);
  wakeHelper();
  lock.unlock();
  if (outcome->failure) std::rethrow_exception(outcome->failure);
  if (hits_ >= hitsToStart && !helper_.joinable() && mayStartHelper_) startHelper();
  return std::move(outcome->snapshot);
}

// Returns when the helper isn't reading the folder (any more). Until then it prefetches others, and waits only if none
// is predicted.
void ReadAhead::awaitHelper(Lock& lock, AbsoluteIRI const& location) {
  bool mayPrefetch = true;
  for (int looks = 0; helperReads_ != nullptr && isSameFolder(*helperReads_, location); ++looks) {
    auto const predicted = mayPrefetch ? takePredicted() : std::nullopt;
    if (predicted) {
      mayPrefetch = prefetch(lock, *predicted);
    } else if (looks < spins) {
      Unlocked const unlocked(lock);
      std::this_thread::yield();
    } else {
      callerSleeps_ = true;
      callerWakes_.wait(lock, [this] { return !callerSleeps_; });
    }
  }
}

std::optional<ReadAhead::Outcome> ReadAhead::takePrefetched(AbsoluteIRI const& location) {
  auto const found = prefetched_.find(keyOf(location));
  if (found == prefetched_.end()) return std::nullopt;
  Outcome outcome = std::move(found->second);
  prefetched_.erase(found);
  prefetchedMemory_ -= outcome.snapshot->entries.memory();
  misses_ = 0;
  return outcome;
}

ReadAhead::Outcome ReadAhead::readRequested(Lock& lock, AbsoluteIRI const& location) {
  auto predicted = order_.next();
  bool const isHit = predicted && isSameFolder(*predicted, location);
  if (isHit) {
    ++hits_;
    misses_ = 0;
    // Prefetched folders that the descent has skipped mustn't fill the window.
    if (helperSleeps_ && !hasMuchRoom()) flushToCache();
  } else {
    hits_ = 0;
    if (++misses_ >= missesToAbandon) abandonDescent(lock);
  }
  auto const position = isHit ? order_.take(std::move(*predicted)) : order_.takeOutOfOrder(location);
  try {
    Reading reading = readUnlocked(lock, location);
    if (reading.lackedResources && helper_.joinable()) {
      stopHelper(lock);
      mayStartHelper_ = false;
      reading = readUnlocked(lock, location);
    }
    order_.enter(position, std::move(reading.subfolders));
    return std::move(reading.outcome);
  } catch (...) {
    order_.enter(position, {});
    throw;
  }
}

// Takes the folder to prefetch: nothing if none is predicted or the window is full.
std::optional<DescentOrder::Position> ReadAhead::takePredicted() {
  bool const hasRoom = prefetched_.empty() || (prefetched_.size() < windowFolders && prefetchedMemory_ < windowMemory);
  auto predicted = hasRoom ? order_.next() : std::nullopt;
  if (!predicted) return std::nullopt;
  return order_.take(std::move(*predicted));
}

// Whether it succeeded. An interrupt or a lack of memory or descriptors isn't reported for a folder that nobody has
// requested: when it is requested, it is read again, and fails again if the cause remains.
bool ReadAhead::prefetch(Lock& lock, DescentOrder::Position position) noexcept {
  try {
    Reading reading = readUnlocked(lock, position->folder);
    if (reading.lackedResources) {
      order_.enter(position, {});
      return false;
    }
    std::u16string_view const key = keyOf(reading.outcome.snapshot->location);
    std::size_t const memory = reading.outcome.snapshot->entries.memory();
    if (prefetched_.try_emplace(key, std::move(reading.outcome)).second) prefetchedMemory_ += memory;
    order_.enter(position, std::move(reading.subfolders));
    return true;
  } catch (...) {
    order_.enter(position, {});
    return false;
  }
}

ReadAhead::Reading ReadAhead::readUnlocked(Lock& lock, AbsoluteIRI const& location) {
  Unlocked const unlocked(lock);
  try {
    auto snapshot = readFolder(*provider_, location, {}, &visibility_);
    EntryTable subfolders = descendedSubfolders(*snapshot);
    return {{std::move(snapshot), nullptr}, std::move(subfolders), false};
  } catch (Exception const& failure) {
    return {{std::make_shared<FolderSnapshot>(location, std::string()), std::current_exception()},
            {},
            lacksResources(failure.systemError())};
  }
}

void ReadAhead::startHelper() {
  hits_ = 0;
  core::threads::SignalsBlocked const blocked;
  try {
    helper_ = std::thread([this, flag = utInterruptScope::current()] {
      utInterruptScope const interruptedWithTheCaller(flag);
      runHelper();
    });
  } catch (std::exception const&) {
    mayStartHelper_ = false;  // the system has no thread to spare: the caller reads alone
  }
}

// The lock is held from the decision on, so that the helper takes no further folder.
void ReadAhead::stopHelper(Lock& lock) noexcept {
  if (!helper_.joinable()) return;
  stopping_ = true;
  helperSleeps_ = false;
  helperWakes_.notify_one();
  lock.unlock();
  helper_.join();
  lock.lock();
  stopping_ = false;
}

void ReadAhead::runHelper() noexcept {
  Lock lock(mutex_);
  bool succeeds = true;
  while (succeeds && !stopping_ && !utIsInterruptPending()) {
    std::optional<DescentOrder::Position> predicted;
    try {
      predicted = takePredicted();
    } catch (...) {
      break;  // out of memory
    }
    if (predicted) {
      helperReads_ = &(*predicted)->folder;
      succeeds = prefetch(lock, *predicted);
      helperReads_ = nullptr;
      wakeCaller();
    } else {
      helperSleeps_ = true;
      helperWakes_.wait(lock, [this] { return !helperSleeps_; });
    }
  }
}

void ReadAhead::abandonDescent(Lock& lock) {
  stopHelper(lock);
  order_.clear();
  misses_ = 0;
  flushToCache();
}

void ReadAhead::flushToCache() {
  auto const unrequested = std::exchange(prefetched_, {});
  prefetchedMemory_ = 0;
  for (auto const& [key, outcome] : unrequested) addToCache_(outcome);
}

bool ReadAhead::hasMuchRoom() const noexcept {
  return prefetched_.size() + worthWaking <= windowFolders && prefetchedMemory_ <= windowMemory / 2;
}

void ReadAhead::wakeHelper() noexcept {
  if (helperSleeps_ && order_.size() >= worthWaking && hasMuchRoom()) {
    helperSleeps_ = false;
    helperWakes_.notify_one();
  }
}

void ReadAhead::wakeCaller() noexcept {
  if (callerSleeps_) {
    callerSleeps_ = false;
    callerWakes_.notify_one();
  }
}

}  // namespace foundation::storage::vfs
