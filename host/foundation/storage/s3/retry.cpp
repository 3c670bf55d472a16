#include "foundation/storage/s3/retry.hpp"

#include <algorithm>
#include <random>
#include <thread>
#include <utility>

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

  double random01() override {
    std::random_device device;  // called only before a wait, so a generator needn't be kept
    return std::uniform_real_distribution<double>()(device);
  }
};

constexpr long ok = 200;

bool isTransient(long status) {
  return status == 429 || status == 500 || status == 502 || status == 503 || status == 504;
}

bool isRetryable(AttemptOutcome const& outcome) {
  if (auto const* const response = std::get_if<Response>(&outcome)) return isTransient(response->status);
  return std::get<Failure>(outcome).kind != Failure::Kind::permanent;
}

}  // namespace

Clock& systemClock() {
  static SystemClock clock;
  return clock;
}

RequestOutcome getWithRetries(Transport& transport, Clock& clock, RetryPolicy const& policy,
                              StoreRequest const& request, ResponseCheck const& check) {
  milliseconds const start = clock.now();
  milliseconds backOff = policy.firstBackOff;
  RequestOutcome outcome;
  for (;;) {
    outcome.last = transport.get(request);
    ++outcome.attempts;
    outcome.elapsed = clock.now() - start;
    if (auto const* const response = std::get_if<Response>(&outcome.last);
        response != nullptr && response->status == ok)
      if (auto fault = check(*response)) outcome.last = Failure{Failure::Kind::lost, *std::move(fault)};
    if (!isRetryable(outcome.last) || outcome.attempts >= policy.maximumAttempts) return outcome;

    auto const* const failure = std::get_if<Failure>(&outcome.last);
    bool const unreachable = failure != nullptr && failure->kind == Failure::Kind::unreachable;
    milliseconds wait(static_cast<milliseconds::rep>(clock.random01() * static_cast<double>(backOff.count())));
    backOff = std::min(2 * backOff, policy.longestBackOff);
    auto const* const response = std::get_if<Response>(&outcome.last);
    if (response != nullptr && response->retryAfter)  // bounded, as milliseconds could overflow
      wait =
          std::max<milliseconds>(wait, std::min<std::chrono::seconds>(*response->retryAfter, std::chrono::hours(24)));
    if (outcome.elapsed + wait >= (unreachable ? policy.unreachableTime : policy.totalTime)) return outcome;
    clock.wait(wait);
  }
}

}  // namespace foundation::storage::s3
