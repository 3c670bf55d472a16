#include "foundation/storage/vfs/session/read_ahead.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

#include "foundation/storage/vfs/storage_exception.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::vfs {
namespace {

using core::threads::MutexLock;
constexpr MutexLock::Spinning spinning;

// How often the caller checks for an answer before it sleeps, and how soon it then notices an interrupt.
constexpr int spins = 50;
constexpr std::chrono::milliseconds pollInterval(40);

// Requests in a row that weren't predicted, after which predictions count as wrong.
constexpr std::size_t missesToShrink = 32;

}  // namespace

ReadAhead::ReadAhead(Cache& cache, Visibility const& visibility, Activity& activity, ReadLimit limit,
                     std::size_t memoryBound)
    : cache_(cache),
      visibility_(visibility),
      activity_(activity),
      limit_(limit),
      memoryBound_(memoryBound),
      window_(ReadWindow::availableCores()),
      listings_{Listing{KeyParts(visibility)}, Listing{KeyParts(visibility)}} {}

ReadAhead::~ReadAhead() {
  closing_ = true;
  {
    MutexLock const lock(mutex_);
    workersWake_.notify_all();
  }
  for (auto& worker : workers_) worker.join();
}

std::shared_ptr<void const> ReadAhead::announce(SearchOutline const& outline) {
  auto search = std::make_shared<SearchStates const>(outline, visibility_);
  std::shared_ptr<void const> announcement = std::make_shared<char>();
  std::vector<Answer> unrequested;
  {
    MutexLock const lock(mutex_, spinning);
    announcement_ = announcement;
    unrequested = takeUnrequested();
    window_.close();
    pending_.clear();
    known_.reset();
    search_ = std::move(search);
    provider_.reset();
  }
  addUnrequested(unrequested);
  return announcement;
}

void ReadAhead::enter(FolderSnapshot const& folder, bool lookupsOnly) {
  MutexLock const lock(mutex_, spinning);
  predictBelow(folder, lookupsOnly);
}

void ReadAhead::predictBelow(FolderSnapshot const& folder, bool lookupsOnly) {
  if (announcement_.expired()) return;
  auto predicted = PendingReads::Group::below(folder, *search_, search_->at(folder.location), lookupsOnly);
  if (predicted) pending_.enterFirst(std::move(*predicted));
}

Answer ReadAhead::request(Question question, std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                          std::size_t mostAhead) {
  std::optional<Answer> answer = awaitPrefetched(question, location, mostAhead);
  if (!answer) answer = readRequested(question, provider, location);
  startWorkers();
  return std::move(*answer);
}

// The answer if it was, or is being, read ahead. While a worker reads it, the caller prefetches others. It doesn't if
// reads wait and the window is wide, as one read more in flight isn't worth being late for this one.
std::optional<Answer> ReadAhead::awaitPrefetched(Question question, AbsoluteIRI const& location,
                                                 std::size_t mostAhead) {
  Read* instead = nullptr;
  for (int looks = 0;; ++looks) {
    {
      MutexLock lock(mutex_, spinning);
      mostAhead_ = mostAhead;
      if (instead != nullptr) finish(*instead);
      auto const found = reads(question).find(keyOf(location));
      if (found == reads(question).end()) return std::nullopt;
      if (found->second->isDone) {
        std::unique_ptr<Read> const read = std::move(found->second);
        reads(question).erase(found);
        return takeAnswer(*read);
      }
      bool const helps = inFlight_ <= window_.size() && !(window_.waits() && window_.isWide());
      instead = helps ? takeNext() : nullptr;
      if (instead == nullptr && (looks >= spins || window_.waits())) await(*found->second, lock);
    }
    if (instead != nullptr) {
      instead->prefetch(visibility_, false);
    } else {
      std::this_thread::yield();
    }
  }
}

Answer ReadAhead::readRequested(Question question, std::shared_ptr<Provider> const& provider,
                                AbsoluteIRI const& location) {
  Read read{Answer{question, location}, provider, nullptr};
  std::optional<SearchStates::Set> predicted;
  std::vector<Answer> unrequested;
  {
    MutexLock const lock(mutex_, spinning);
    if (!announcement_.expired()) read.search = search_;
    if (!provider_) provider_ = provider;
    predicted = pending_.takeRequested(question, location);
    misses_ = predicted ? 0 : misses_ + 1;
    if (misses_ == missesToShrink) window_.shrink();
    // What was read ahead in another order than it is requested in mustn't fill the window.
    if (misses_ == missesToShrink || !hasRoom(1)) unrequested = takeUnrequested();
  }
  addUnrequested(unrequested);
  if (read.search) read.states = predicted ? *predicted : read.search->at(location);
  read.make(visibility_, measuresNext());
  if (read.lackedResources && !workers_.empty()) {
    awaitWorkers();
    read.answer.failure = nullptr;
    read.make(visibility_, false);
  }
  MutexLock const lock(mutex_, spinning);
  if (read.measured) window_.noteRead(*read.measured);
  if (predicted) window_.noteHit(limit_.of(*provider));
  if (read.predicted) pending_.enterFirst(std::move(*read.predicted));
  wakeWorkers();
  return std::move(read.answer);
}

bool ReadAhead::measuresNext() noexcept {
  std::size_t const before = readsOfCaller_++;
  return before < ReadWindow::measureEvery || before % ReadWindow::measureEvery == 0;
}

void ReadAhead::noteFailure(bool lackedResources) noexcept {
  if (lackedResources) {
    window_.limit(inFlight_ - std::min<std::size_t>(inFlight_, 1));  // for the others there was enough
  } else {
    window_.shrink();
  }
}

void ReadAhead::finish(Read& read) noexcept {
  if (read.measured) window_.noteRead(*read.measured);
  if (read.search == search_) pending_.enter(read.position, std::exchange(read.predicted, std::nullopt));
  if (awaited_ == &read) callerWakes_.notify_one();
  if (read.isAnswered) {
    memory_ += read.memory;
    read.isDone = true;
    return;
  }
  noteFailure(read.lackedResources);
  reads(read.answer.question).erase(keyOf(read.answer.location));
}

// Whether so many reads more can be made ahead.
bool ReadAhead::hasRoom(std::size_t reads) const {
  std::size_t const ahead = reads_[0].size() + reads_[1].size();
  return ahead + reads <= std::min(window_.ahead(), mostAhead_) && (ahead == 0 || memory_ < memoryBound_);
}

// Takes a read to make ahead; null if none is predicted or there is no room.
Read* ReadAhead::takeNext() noexcept {
  try {
    while (provider_ && known_ && !announcement_.expired() && hasRoom(1)) {
      auto taken = pending_.takeNext();
      if (!taken) break;
      auto read = std::make_unique<Read>(Read{Answer{taken->question, std::move(taken->location)}, provider_, search_,
                                              taken->states, taken->position});
      std::u16string_view const key = keyOf(read->answer.location);
      if (known_->empty() || taken->question != Question::entries || !known_->contains(KeyHash()(key))) {
        auto const [at, isNew] = reads(taken->question).try_emplace(key, std::move(read));
        if (isNew) return at->second.get();
      }
      pending_.enter(taken->position, std::nullopt);  // it was read before this search
    }
  } catch (std::exception const&) {
    return nullptr;  // out of memory
  }
  return nullptr;
}

Answer ReadAhead::takeAnswer(Read& read) {
  memory_ -= read.memory;
  misses_ = 0;
  if (read.search != search_) {  // it was read for a search before this one
    pending_.takeRequested(read.answer.question, read.answer.location);
    if (read.answer.snapshot) predictBelow(*read.answer.snapshot, false);
  }
  window_.noteHit(limit_.of(*read.provider));
  wakeWorkers();
  return std::move(read.answer);
}

std::vector<Answer> ReadAhead::takeUnrequested() {
  std::vector<Answer> answers;
  for (Reads& reads : reads_) {
    for (auto next = reads.begin(); next != reads.end();) {
      auto const read = next++;
      if (!read->second->isDone) continue;
      memory_ -= read->second->memory;
      answers.push_back(std::move(read->second->answer));
      reads.erase(read);
    }
  }
  return answers;
}

void ReadAhead::addUnrequested(std::vector<Answer> const& answers) {
  for (auto const& answer : answers) cache_.addUnrequested(answer);
}

void ReadAhead::await(Read const& read, MutexLock& lock) {
  awaited_ = &read;
  callerWakes_.wait_for(lock.forWaiting(), pollInterval);
  awaited_ = nullptr;
  utThrowIfInterruptPending();
}

// Stops reading ahead, and waits until no other thread holds descriptors or memory for it.
void ReadAhead::awaitWorkers() {
  MutexLock lock(mutex_);
  window_.limit(0);
  while (inFlight_ != 0) {
    callerWakes_.wait_for(lock.forWaiting(), std::chrono::milliseconds(1));
    utThrowIfInterruptPending();
  }
}

}  // namespace foundation::storage::vfs
