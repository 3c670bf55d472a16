#include "foundation/storage/vfs/read_ahead.hpp"

#include <csignal>
#include <utility>

#include "interrupt/interrupt_state.hpp"

namespace foundation::storage::vfs {
namespace {

void wake(std::atomic<std::uint32_t>& sleeps) noexcept {
  if (sleeps.exchange(0) != 0) sleeps.notify_one();
}

// Looks for the reason to stay awake once more when the other side can see the sleeper: else it might not be woken.
template <class Reason>
void sleepUnless(std::atomic<std::uint32_t>& sleeps, Reason const& reason) {
  sleeps = 1;
  if (reason()) {
    sleeps = 0;
  } else {
    sleeps.wait(1);
  }
}

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

}  // namespace

ReadAhead::ReadAhead(std::shared_ptr<Provider> provider, DescentOrder order)
    : provider_(std::move(provider)), order_(std::move(order)) {
  SignalsBlocked const blocked;
  thread_ = std::thread([this] { run(); });
}

ReadAhead::Result const* ReadAhead::front() {
  std::uint32_t const next = taken_;
  for (;;) {
    bool const last = ended_;
    if (filled_ != next) return &results_[next % capacity];
    if (last) return nullptr;
    sleepUnless(takerSleeps_, [&] { return filled_ != next || ended_; });
  }
}

ReadAhead::Result ReadAhead::take() {
  std::uint32_t const next = taken_;
  Result result = std::move(results_[next % capacity]);
  memory_ -= result.memory;
  taken_ = next + 1;
  if (fillerSleeps_ != 0 && filled_ - taken_ <= capacity - worthWaking && memory_ <= memoryBound / 2) {
    wake(fillerSleeps_);
  }
  return result;
}

DescentOrder& ReadAhead::stop() noexcept {
  stopping_ = true;
  wake(fillerSleeps_);
  if (thread_.joinable()) thread_.join();
  return order_;
}

void ReadAhead::run() noexcept {
  try {
    while (waitForRoom()) {
      auto const location = order_.next();
      if (!location) break;
      Result result = read(*location);
      order_.pass();
      if (!result.failure) order_.enter(*result.reading);
      put(std::move(result));
    }
  } catch (...) {
    // An interrupt or a lack of memory. The other thread reads this folder itself, and meets it there.
  }
  ended_ = true;
  wake(takerSleeps_);
}

bool ReadAhead::waitForRoom() {
  auto const hasRoom = [this] {
    std::uint32_t const held = filled_ - taken_;
    return held == 0 || (held < capacity && memory_ < memoryBound);
  };
  while (!stopping_ && !hasRoom()) {
    wake(takerSleeps_);
    sleepUnless(fillerSleeps_, [&] { return stopping_ || hasRoom(); });
  }
  return !stopping_ && !utIsInterruptPending();
}

ReadAhead::Result ReadAhead::read(AbsoluteIRI const& location) {
  try {
    auto reading = readFolder(*provider_, location, {});
    std::size_t const memory = reading->entries.memory();
    return {std::move(reading), nullptr, memory};
  } catch (Exception const& failure) {
    return {std::make_shared<FolderReading>(location, std::string()), std::make_unique<Exception const>(failure), 0};
  }
}

void ReadAhead::put(Result result) {
  std::uint32_t const next = filled_;
  memory_ += result.memory;
  results_[next % capacity] = std::move(result);
  filled_ = next + 1;
  if (takerSleeps_ != 0 && filled_ - taken_ >= worthWaking) wake(takerSleeps_);
}

}  // namespace foundation::storage::vfs
