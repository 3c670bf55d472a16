#include "foundation/storage/vfs/session/read_ahead.hpp"

#include <string>
#include <utility>

#include "foundation/core/threads/signals_blocked.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"

namespace foundation::storage::vfs {
namespace {

// A search of a few folders isn't worth a thread.
constexpr std::size_t descentAfter = 32;

// An order that is no longer followed, not one left for a link or a folder with a dot name.
constexpr std::size_t astrayAfter = 32;

// How far ahead it reads.
constexpr std::size_t capacity = 256;
constexpr std::size_t memoryBound = std::size_t{4} << 20;

// The second thread is woken when there is this much for it to do, lest every folder cost a system call.
constexpr std::size_t worthWaking = 8;

// How often something that comes in a moment is looked for before a thread sleeps: being put to sleep and woken again
// takes longer than a folder of a disk.
constexpr int patience = 50;

void lockPatiently(std::unique_lock<std::mutex>& lock) {
  for (int i = 0; i < patience; ++i) {
    if (lock.try_lock()) return;
    std::this_thread::yield();
  }
  lock.lock();
}

// Gives the lock up while it lives.
class Unlocked {
 public:
  explicit Unlocked(std::unique_lock<std::mutex>& lock) : lock_(lock) { lock_.unlock(); }
  ~Unlocked() { lockPatiently(lock_); }
  Unlocked(Unlocked const&) = delete;
  Unlocked& operator=(Unlocked const&) = delete;

 private:
  std::unique_lock<std::mutex>& lock_;
};

bool sameFolder(AbsoluteIRI const& a, AbsoluteIRI const& b) {
  return KeyEqual()(keyOf(a), keyOf(b));
}

}  // namespace

DescentReader::~DescentReader() {
  Lock lock(mutex_);
  stop(lock);
}

std::shared_ptr<FolderReading> DescentReader::read(std::shared_ptr<Provider> const& provider,
                                                   AbsoluteIRI const& location) {
  Lock lock(mutex_, std::defer_lock);
  lockPatiently(lock);
  if (provider != provider_) {
    turnElsewhere(lock);
    provider_ = provider;
  }
  awaitOther(lock, location);
  std::optional<Result> result = takeAhead(location);
  if (!result) result = readNow(lock, location);
  wakeOther();
  lock.unlock();
  if (result->failure) std::rethrow_exception(result->failure);
  if (inOrder_ >= descentAfter && !thread_.joinable() && mayStart_) start();
  return std::move(result->reading);
}

// Returns when the second thread isn't reading the folder (any more). Until then it reads others ahead, and only where
// there is none it waits.
void DescentReader::awaitOther(Lock& lock, AbsoluteIRI const& location) {
  bool readsAhead = true;
  for (int looks = 0; otherReads_ != nullptr && sameFolder(*otherReads_, location); ++looks) {
    auto const next = readsAhead ? takeNext() : std::nullopt;
    if (next) {
      readsAhead = readAhead(lock, *next);
    } else if (looks < patience) {
      Unlocked const unlocked(lock);
      std::this_thread::yield();
    } else {
      callerSleeps_ = true;
      callerWakes_.wait(lock, [this] { return !callerSleeps_; });
    }
  }
}

std::optional<DescentReader::Result> DescentReader::takeAhead(AbsoluteIRI const& location) {
  auto const found = ahead_.find(keyOf(location));
  if (found == ahead_.end()) return std::nullopt;
  Result result = std::move(found->second);
  ahead_.erase(found);
  memory_ -= result.reading->entries.memory();
  outOfOrder_ = 0;
  return result;
}

DescentReader::Result DescentReader::readNow(Lock& lock, AbsoluteIRI const& location) {
  auto next = order_.next();
  bool const follows = next && sameFolder(*next, location);
  if (follows) {
    ++inOrder_;
    outOfOrder_ = 0;
    // What the descent has passed over mustn't keep the second thread from reading on.
    if (otherSleeps_ && !hasMuchRoom()) handOver();
  } else {
    inOrder_ = 0;
    if (++outOfOrder_ >= astrayAfter) turnElsewhere(lock);
  }
  DescentOrder::Place const place = follows ? order_.take(std::move(*next)) : order_.takeAside(location);
  try {
    Found found = readUnlocked(lock, location);
    order_.enter(place, std::move(found.subfolders));
    return std::move(found.result);
  } catch (...) {
    order_.enter(place, {});
    throw;
  }
}

// Takes the folder to be read ahead: none when none is known, or enough has been read.
std::optional<DescentOrder::Place> DescentReader::takeNext() {
  bool const hasRoom = ahead_.empty() || (ahead_.size() < capacity && memory_ < memoryBound);
  auto next = hasRoom ? order_.next() : std::nullopt;
  if (!next) return std::nullopt;
  return order_.take(std::move(*next));
}

// Whether that went well. An interrupt or a lack of memory is nothing to those who didn't ask for this folder: whoever
// does reads it anew, and meets it there.
bool DescentReader::readAhead(Lock& lock, DescentOrder::Place place) noexcept {
  try {
    Found found = readUnlocked(lock, place->folder);
    std::u16string_view const key = keyOf(found.result.reading->location);
    std::size_t const memory = found.result.reading->entries.memory();
    if (ahead_.try_emplace(key, std::move(found.result)).second) memory_ += memory;
    order_.enter(place, std::move(found.subfolders));
    return true;
  } catch (...) {
    order_.enter(place, {});
    return false;
  }
}

DescentReader::Found DescentReader::readUnlocked(Lock& lock, AbsoluteIRI const& location) {
  Unlocked const unlocked(lock);
  return readOrFail(*provider_, location);
}

DescentReader::Found DescentReader::readOrFail(Provider& provider, AbsoluteIRI const& location) {
  try {
    auto reading = readFolder(provider, location, {});
    EntryTable subfolders = followedSubfolders(*reading);
    return {{std::move(reading), nullptr}, std::move(subfolders)};
  } catch (Exception const&) {
    return {{std::make_shared<FolderReading>(location, std::string()), std::current_exception()}, {}};
  }
}

void DescentReader::start() {
  inOrder_ = 0;
  core::threads::SignalsBlocked const blocked;
  try {
    thread_ = std::thread([this] { run(); });
  } catch (std::exception const&) {
    mayStart_ = false;  // no thread to be had: it goes without
  }
}

// With the lock from the decision on, so that the second thread takes no other folder.
void DescentReader::stop(Lock& lock) noexcept {
  if (!thread_.joinable()) return;
  stopping_ = true;
  otherSleeps_ = false;
  otherWakes_.notify_one();
  lock.unlock();
  thread_.join();
  lock.lock();
  stopping_ = false;
}

void DescentReader::run() noexcept {
  Lock lock(mutex_);
  bool goesWell = true;
  while (goesWell && !stopping_ && !utIsInterruptPending()) {
    std::optional<DescentOrder::Place> next;
    try {
      next = takeNext();
    } catch (...) {
      break;  // a lack of memory
    }
    if (next) {
      otherReads_ = &(*next)->folder;
      goesWell = readAhead(lock, *next);
      otherReads_ = nullptr;
      wakeCaller();
    } else {
      otherSleeps_ = true;
      otherWakes_.wait(lock, [this] { return !otherSleeps_; });
    }
  }
}

// The order isn't followed any more: reads ahead no further.
void DescentReader::turnElsewhere(Lock& lock) {
  stop(lock);
  order_.clear();
  outOfOrder_ = 0;
  handOver();
}

void DescentReader::handOver() {
  auto const passedOver = std::exchange(ahead_, {});
  memory_ = 0;
  for (auto const& [key, result] : passedOver) receive_(result);
}

bool DescentReader::hasMuchRoom() const noexcept {
  return ahead_.size() + worthWaking <= capacity && memory_ <= memoryBound / 2;
}

void DescentReader::wakeOther() noexcept {
  if (otherSleeps_ && order_.size() >= worthWaking && hasMuchRoom()) {
    otherSleeps_ = false;
    otherWakes_.notify_one();
  }
}

void DescentReader::wakeCaller() noexcept {
  if (callerSleeps_) {
    callerSleeps_ = false;
    callerWakes_.notify_one();
  }
}

}  // namespace foundation::storage::vfs
