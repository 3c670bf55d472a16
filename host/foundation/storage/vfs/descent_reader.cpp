#include "foundation/storage/vfs/descent_reader.hpp"

#include <csignal>
#include <string>
#include <system_error>
#include <utility>

#include "interrupt/interrupt_state.hpp"

namespace foundation::storage::vfs {
namespace {

// A search of a few folders isn't worth a thread.
constexpr std::size_t descentAfter = 32;

// An order that is no longer followed, not one left for a link or a folder with a dot name.
constexpr std::size_t astrayAfter = 32;

// How far ahead it reads.
constexpr std::size_t capacity = 256;
constexpr std::size_t memoryBound = std::size_t{4} << 20;

// A thread that sleeps is woken when there is this much for it to do, lest every folder cost a system call.
constexpr std::size_t worthWaking = 8;

// A thread that is made while this lives takes no signals: they are for the host's own threads.
class SignalsBlocked {
 public:
  SignalsBlocked() noexcept {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(SignalsBlocked const&) = delete;
  SignalsBlocked& operator=(SignalsBlocked const&) = delete;

 private:
  sigset_t before_;
};

bool sameFolder(AbsoluteIRI const& a, AbsoluteIRI const& b) {
  return KeyEqual()(keyOf(a), keyOf(b));
}

// The other thread keeps the lock so shortly that it is not worth a system call to sleep until it is free.
void lockSoon(std::unique_lock<std::mutex>& lock) {
  constexpr int tries = 50;
  for (int i = 0; i < tries; ++i) {
    if (lock.try_lock()) return;
    std::this_thread::yield();
  }
  lock.lock();
}

}  // namespace

std::shared_ptr<FolderReading> DescentReader::read(std::shared_ptr<Provider> const& provider,
                                                   AbsoluteIRI const& location, Receive const& receive) {
  if (provider != provider_) {
    handOver(receive);
    provider_ = provider;
  }
  Lock lock(mutex_, std::defer_lock);
  lockSoon(lock);
  awaitOther(lock, location);
  std::optional<Result> result = takeAhead(location);
  if (!result) result = readNow(lock, location, receive);
  wakeOther();
  lock.unlock();
  if (result->failure) throw Exception(*result->failure);
  if (inOrder_ >= descentAfter && !thread_.joinable() && mayStart_) start();
  return std::move(result->reading);
}

// Returns when the second thread isn't reading the folder.
void DescentReader::awaitOther(Lock& lock, AbsoluteIRI const& location) {
  while (otherReads_ != nullptr && sameFolder(*otherReads_, location)) {
    if (auto const next = takeNext()) {
      keep(readTaken(lock, *next));
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

DescentReader::Result DescentReader::readNow(Lock& lock, AbsoluteIRI const& location, Receive const& receive) {
  auto next = order_.next();
  if (next && sameFolder(*next, location)) {
    ++inOrder_;
    outOfOrder_ = 0;
    return readTaken(lock, order_.take(std::move(*next)));
  }
  inOrder_ = 0;
  if (++outOfOrder_ == astrayAfter) {
    lock.unlock();
    handOver(receive);
    lock.lock();
  }
  return readTaken(lock, order_.takeAside(location));
}

// Reads without the lock.
DescentReader::Result DescentReader::readTaken(Lock& lock, DescentOrder::Place place) {
  lock.unlock();
  Result result;
  EntryTable subfolders;
  try {
    result.reading = readFolder(*provider_, place->folder, {});
    subfolders = followedSubfolders(*result.reading);
  } catch (Exception const& failure) {
    result = {std::make_shared<FolderReading>(place->folder, std::string()),
              std::make_unique<Exception const>(failure)};
  } catch (...) {
    lock.lock();
    order_.enter(place, {});
    throw;
  }
  lockSoon(lock);
  order_.enter(place, std::move(subfolders));
  return result;
}

// Takes the folder to be read ahead: none when none is known, or enough has been read.
std::optional<DescentOrder::Place> DescentReader::takeNext() {
  bool const hasRoom = ahead_.empty() || (ahead_.size() < capacity && memory_ < memoryBound);
  auto next = hasRoom ? order_.next() : std::nullopt;
  if (!next) return std::nullopt;
  return order_.take(std::move(*next));
}

void DescentReader::keep(Result result) {
  std::u16string_view const key = keyOf(result.reading->location);
  std::size_t const memory = result.reading->entries.memory();
  if (ahead_.try_emplace(key, std::move(result)).second) memory_ += memory;
}

void DescentReader::start() {
  inOrder_ = 0;
  SignalsBlocked const blocked;
  try {
    thread_ = std::thread([this] { run(); });
  } catch (std::system_error const&) {
    mayStart_ = false;  // no thread to be had: it goes without
  }
}

void DescentReader::stop() noexcept {
  if (!thread_.joinable()) return;
  {
    Lock const lock(mutex_);
    stopping_ = true;
    otherSleeps_ = false;
  }
  otherWakes_.notify_one();
  thread_.join();
  stopping_ = false;
}

void DescentReader::handOver(Receive const& receive) {
  stop();
  for (auto& read : ahead_) receive(std::move(read.second));
  ahead_.clear();
  memory_ = 0;
  order_.clear();
  outOfOrder_ = 0;
}

void DescentReader::run() noexcept {
  Lock lock(mutex_);
  try {
    while (!stopping_ && !utIsInterruptPending()) {
      if (auto const next = takeNext()) {
        otherReads_ = &(*next)->folder;
        Result result = readTaken(lock, *next);
        otherReads_ = nullptr;
        keep(std::move(result));
        if (ahead_.size() + order_.size() >= worthWaking) wakeCaller();
      } else {
        wakeCaller();
        otherSleeps_ = true;
        otherWakes_.wait(lock, [this] { return !otherSleeps_; });
      }
    }
  } catch (...) {
    // An interrupt or a lack of memory. The other thread reads this folder itself, and meets it there.
  }
  otherReads_ = nullptr;
  wakeCaller();
}

void DescentReader::wakeOther() {
  bool const worthIt =
      order_.size() >= worthWaking && ahead_.size() + worthWaking <= capacity && memory_ <= memoryBound / 2;
  if (otherSleeps_ && worthIt) {
    otherSleeps_ = false;
    otherWakes_.notify_one();
  }
}

void DescentReader::wakeCaller() {
  if (callerSleeps_) {
    callerSleeps_ = false;
    callerWakes_.notify_one();
  }
}

}  // namespace foundation::storage::vfs
