#include <deque>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/storage/s3/retry.hpp"

namespace foundation::storage::s3 {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// A clock that moves only when waited on.
class StillClock : public Clock {
 public:
  explicit StillClock(double chance) : chance_(chance) {}
  milliseconds now() override { return now_; }
  void wait(milliseconds time) override {
    waits.push_back(time);
    now_ += time;
  }
  double chance() override { return chance_; }
  void pass(milliseconds time) { now_ += time; }

  std::vector<milliseconds> waits;

 private:
  milliseconds now_{1000000};
  double chance_;
};

/// Gives the outcomes in turn, the last one for ever, each after a time.
class ScriptedTransport : public Transport {
 public:
  ScriptedTransport(StillClock& clock, milliseconds each, std::deque<Outcome> outcomes)
      : clock_(clock), each_(each), outcomes_(std::move(outcomes)) {}

  Outcome get(std::string const&, milliseconds limit) override {
    limits.push_back(limit);
    clock_.pass(std::min(each_, limit));
    Outcome const outcome = outcomes_.front();
    if (outcomes_.size() > 1) outcomes_.pop_front();
    return outcome;
  }

  std::vector<milliseconds> limits;

 private:
  StillClock& clock_;
  milliseconds each_;
  std::deque<Outcome> outcomes_;
};

Outcome status(long code, std::optional<seconds> retryAfter = {}) {
  Answer answer;
  answer.status = code;
  answer.retryAfter = retryAfter;
  return answer;
}

Outcome failure(Failure::Kind kind) {
  return Failure{kind, ""};
}

TEST(S3Retry, OnlyWhatMayPassIsTriedAgain) {
  Outcome const passing[] = {status(429),
                             status(500),
                             status(502),
                             status(503),
                             status(504),
                             failure(Failure::Kind::lost),
                             failure(Failure::Kind::unreachable)};
  for (Outcome const& outcome : passing) {
    StillClock clock(0.5);
    ScriptedTransport transport(clock, milliseconds(1), {outcome, outcome, outcome, status(200)});
    Result const result = getWithRetries(transport, clock, {}, "");
    EXPECT_EQ(result.attempts, 4U);
    EXPECT_TRUE(std::holds_alternative<Answer>(result.outcome) && std::get<Answer>(result.outcome).status == 200);
    EXPECT_EQ(clock.waits, (std::vector<milliseconds>{milliseconds(50), milliseconds(100), milliseconds(200)}));
  }
  Outcome const final[] = {status(200), status(301), status(400), status(403),
                           status(404), status(412), status(501), failure(Failure::Kind::lasting)};
  for (Outcome const& outcome : final) {
    StillClock clock(0.5);
    ScriptedTransport transport(clock, milliseconds(1), {outcome});
    EXPECT_EQ(getWithRetries(transport, clock, {}, "").attempts, 1U);
    EXPECT_TRUE(clock.waits.empty());
  }
}

TEST(S3Retry, EndsWithinItsBounds) {
  struct Case {
    Outcome outcome;
    milliseconds each;
    double chance;
    RetryPolicy policy;
    unsigned attempts;
    milliseconds atMost;
  };
  RetryPolicy const usual;
  RetryPolicy twice;
  twice.attempts = 2;
  RetryPolicy endless;
  endless.attempts = 1000000;
  Case const cases[] = {
      {status(503), milliseconds(1), 0, usual, 10, milliseconds(10)},
      {status(503), milliseconds(1), 0.999, twice, 2, milliseconds(102)},
      {failure(Failure::Kind::lost), seconds(10), 0, usual, 3, seconds(30)},
      {failure(Failure::Kind::lost), seconds(100), 0, usual, 1, seconds(30)},
      {failure(Failure::Kind::unreachable), milliseconds(0), 0.999, usual, 7, seconds(8)},
      {failure(Failure::Kind::unreachable), seconds(5), 0, usual, 2, seconds(10)},
      {status(500), milliseconds(1), 0.999, endless, 11, seconds(30)},
      {status(503, seconds(4)), milliseconds(1), 0, usual, 8, seconds(30)},
      {status(503, seconds(1000000000000)), milliseconds(1), 0, usual, 1, milliseconds(1)},
  };
  for (Case const& c : cases) {
    StillClock clock(c.chance);
    ScriptedTransport transport(clock, c.each, {c.outcome});
    milliseconds const start = clock.now();
    Result const result = getWithRetries(transport, clock, c.policy, "");
    EXPECT_EQ(result.attempts, c.attempts);
    EXPECT_LE(clock.now() - start, c.atMost);
    EXPECT_EQ(result.spent, clock.now() - start);
    for (milliseconds const wait : clock.waits) EXPECT_TRUE(wait <= c.policy.longestWait) << wait.count();
    for (milliseconds const limit : transport.limits) EXPECT_TRUE(limit > milliseconds(0) && limit <= c.policy.total);
  }
}

}  // namespace
}  // namespace foundation::storage::s3
