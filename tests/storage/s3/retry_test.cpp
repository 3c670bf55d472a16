#include "foundation/storage/s3/retry.hpp"

#include <gtest/gtest.h>

namespace foundation::storage::s3 {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// Gives one outcome for ever, each after a time, by a clock that moves only then and when waited on.
class Still : public Clock, public Transport {
 public:
  Still(Outcome outcome, milliseconds each, double chance)
      : outcome_(std::move(outcome)), each_(each), chance_(chance) {}
  milliseconds now() override { return now_; }
  double chance() override { return chance_; }
  void wait(milliseconds time) override { now_ += time; }
  Outcome get(std::string const&, milliseconds limit) override {
    now_ += std::min(each_, limit);
    return outcome_;
  }

 private:
  Outcome outcome_;
  milliseconds each_, now_{1000000};
  double chance_;
};

Outcome status(long code, std::optional<seconds> retryAfter = {}) {
  Answer answer;
  answer.status = code;
  answer.retryAfter = retryAfter;
  return answer;
}

TEST(S3Retry, TriesAgainWhatMayPassAndEndsWithinItsBounds) {
  struct Case {
    Outcome outcome;
    milliseconds each;
    double chance;
    unsigned most, attempts;
    milliseconds spent;
  };
  auto const lost = Failure{Failure::Kind::lost, ""};
  unsigned const usual = RetryPolicy().attempts;
  Case const cases[] = {
      {Failure{Failure::Kind::lasting, ""}, milliseconds(1), 0, usual, 1, milliseconds(1)},
      {status(429), milliseconds(1), 0, usual, 10, milliseconds(10)},
      {status(500), milliseconds(1), 0.5, 4, 4, milliseconds(4 + 50 + 100 + 200)},
      {status(503), milliseconds(1), 0.5, 2, 2, milliseconds(2 + 50)},
      {lost, seconds(10), 0, usual, 3, seconds(30)},
      {lost, seconds(100), 0, usual, 1, seconds(30)},
      {status(503, seconds(4)), milliseconds(0), 0, usual, 8, seconds(28)},
      {status(503, seconds(1000000000000)), milliseconds(1), 0, usual, 1, milliseconds(1)},
  };
  for (Case const& c : cases) {
    Still still(c.outcome, c.each, c.chance);
    RetryPolicy policy;
    policy.attempts = c.most;
    Result const result = getWithRetries(still, still, policy, "");
    EXPECT_EQ(result.attempts, c.attempts);
    EXPECT_EQ(result.spent, c.spent) << result.spent.count() << " ms";
  }
}

}  // namespace
}  // namespace foundation::storage::s3
