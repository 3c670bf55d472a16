#include "capi/match_blocks.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "foundation/core/text/bytes.hpp"

namespace kglob {

using foundation::core::threads::MutexLock;

template <class Append>
bool MatchBlocks::append(Append appendTo) {
  MutexLock lock(mutex_);
  while (!isClosed_ && filling_.size() >= capacity) changed_.wait(lock.forWaiting());
  if (isClosed_) return false;
  bool const wasEmpty = filling_.size() == 0;
  appendTo(filling_);
  if (wasEmpty) due_ = isFirst_ ? Clock::time_point::min() : Clock::now() + maxDelay;
  if ((wasEmpty && awaitsFirst_) || filling_.size() >= capacity) changed_.notify_one();
  return true;
}

bool MatchBlocks::add(std::u16string_view match, std::optional<Facts> facts) {
  return append([&](Block& block) {
    std::string& matches = block.matches;
    std::size_t const before = matches.size();
    try {
      if (!foundation::core::text::appendBytes(matches, match)) throw std::invalid_argument("a match has no byte form");
      matches += '\0';
      if (facts) block.facts.push_back(std::move(*facts));
    } catch (...) {
      matches.resize(before);
      throw;
    }
  });
}

bool MatchBlocks::endPattern(std::optional<SearchFailure> error) {
  return append([&error](Block& block) {
    block.ends.push_back({block.matches.size(), block.facts.size(), std::move(error)});
  });
}

void MatchBlocks::end() noexcept {
  MutexLock const lock(mutex_);
  hasEnded_ = true;
  changed_.notify_one();
}

bool MatchBlocks::isDue(Clock::time_point now) const {
  return hasEnded_ || filling_.size() >= capacity || (filling_.size() > 0 && now >= due_);
}

std::optional<MatchBlocks::Step> MatchBlocks::next(std::optional<std::chrono::milliseconds> timeout) {
  if (auto const step = nextOfGiven()) return step;
  auto now = Clock::now();
  auto const giveUp = timeout ? now + *timeout : Clock::time_point::max();
  {
    MutexLock lock(mutex_);
    for (; !isDue(now); now = Clock::now()) {
      if (now >= giveUp) return std::nullopt;
      // For so long after the last block, the next one is due only when it is full: its first match needn't wake anyone.
      bool const isEmpty = filling_.size() == 0;
      auto const quietEnd = lastGiven_ + maxDelay;
      awaitsFirst_ = isEmpty && now >= quietEnd;
      auto const until = awaitsFirst_ ? giveUp : std::min(giveUp, isEmpty ? quietEnd : due_);
      if (until == Clock::time_point::max())
        changed_.wait(lock.forWaiting());
      else
        changed_.wait_until(lock.forWaiting(), until);
    }
    given_.matches.clear();
    given_.facts.clear();
    given_.ends.clear();
    given_.position = given_.endsPassed = 0;
    std::swap(given_, filling_);
    isFirst_ = false;
    lastGiven_ = now;
    changed_.notify_one();
  }
  auto const step = nextOfGiven();
  return step ? step : Step{{}, &outOfMemory};
}

// Nothing if the block has been consumed.
std::optional<MatchBlocks::Step> MatchBlocks::nextOfGiven() {
  PatternEnd const* const end = given_.endsPassed < given_.ends.size() ? &given_.ends[given_.endsPassed] : nullptr;
  std::size_t const begin = std::exchange(given_.position, end == nullptr ? given_.matches.size() : end->offset);
  if (given_.position > begin)
    return Step{std::string_view(given_.matches).substr(begin, given_.position - begin), nullptr};
  if (end == nullptr) return std::nullopt;
  if (end->error) givenError_ = end->error->view();
  return Step{{}, end->error ? &givenError_ : nullptr};
}

MatchBlocks::Facts const* MatchBlocks::facts(std::size_t index) const noexcept {
  std::size_t const begin = given_.endsPassed == 0 ? 0 : given_.ends[given_.endsPassed - 1].facts;
  bool const endsHere = given_.endsPassed < given_.ends.size();
  std::size_t const end = endsHere ? given_.ends[given_.endsPassed].facts : given_.facts.size();
  return index < end - begin ? &given_.facts[begin + index] : nullptr;
}

void MatchBlocks::close() noexcept {
  MutexLock const lock(mutex_);
  isClosed_ = true;
  changed_.notify_one();
}

}  // namespace kglob
