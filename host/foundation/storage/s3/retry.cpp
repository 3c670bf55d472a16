#include "foundation/storage/s3/retry.hpp"

#include <algorithm>
#include <random>
#include <thread>

#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::s3 {
namespace {

using std::chrono::milliseconds;

class SystemClock : public Clock {
 public:
  milliseconds now() override {
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
  }

  void wait(milliseconds time) override {
    for (milliseconds const end = now() + time;;) {
      utThrowIfInterruptPending();
      milliseconds const left = end - now();
      if (left <= milliseconds(0)) return;
      std::this_thread::sleep_for(std::min(left, milliseconds(40)));
    }
  }

  double chance() override {
    thread_local std::minstd_rand generator(std::random_device{}());
    return std::uniform_real_distribution<double>()(generator);
  }
};

bool isPassing(long status) {
  return status == 429 || status == 500 || status == 502 || status == 503 || status == 504;
}

bool worthRepeating(Outcome const& outcome) {
  if (auto const* const answer = std::get_if<Answer>(&outcome)) return isPassing(answer->status);
  return std::get<Failure>(outcome).kind != Failure::Kind::lasting;
}

}  // namespace

Clock& systemClock() {
  static SystemClock clock;
  return clock;
}

Result getWithRetries(Transport& transport, Clock& clock, RetryPolicy const& policy, std::string const& url) {
  milliseconds const start = clock.now();
  milliseconds bound = policy.firstWait;
  Result result;
  for (milliseconds left = policy.total;;) {
    result.outcome = transport.get(url, left);
    ++result.attempts;
    result.spent = clock.now() - start;
    if (!worthRepeating(result.outcome) || result.attempts >= policy.attempts) return result;

    auto const* const failure = std::get_if<Failure>(&result.outcome);
    bool const unreachable = failure != nullptr && failure->kind == Failure::Kind::unreachable;
    milliseconds wait(static_cast<milliseconds::rep>(clock.chance() * static_cast<double>(bound.count())));
    bound = std::min(2 * bound, policy.longestWait);
    if (auto const* const answer = std::get_if<Answer>(&result.outcome); answer != nullptr && answer->retryAfter)
      wait = std::max<milliseconds>(wait, std::min<std::chrono::seconds>(*answer->retryAfter, std::chrono::hours(24)));
    if (result.spent + wait >= (unreachable ? policy.unreachable : policy.total)) return result;
    clock.wait(wait);
    left = policy.total - (clock.now() - start);
    if (left <= milliseconds(0)) return result;
  }
}

}  // namespace foundation::storage::s3
