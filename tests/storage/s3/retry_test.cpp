#include "foundation/storage/s3/retry.hpp"

#include <gtest/gtest.h>

#include "foundation/storage/s3/client.hpp"
#include "foundation/storage/vfs/detail/iri_access.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::s3 {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// Returns the same outcome every time. The clock advances only by the time that an attempt or a wait takes.
class FakeStore : public Clock, public Transport {
 public:
  FakeStore(AttemptOutcome outcome, milliseconds each, double random)
      : outcome_(std::move(outcome)), each_(each), random_(random) {}
  milliseconds now() override { return now_; }
  double random01() override { return random_; }
  void wait(milliseconds time) override { now_ += time; }
  AttemptOutcome get(StoreRequest const&) override {
    now_ += each_;
    return outcome_;
  }

 private:
  AttemptOutcome outcome_;
  milliseconds each_, now_{1000000};
  double random_;
};

AttemptOutcome status(long code, std::optional<seconds> retryAfter = {}) {
  Response response;
  response.status = code;
  response.retryAfter = retryAfter;
  return response;
}

TEST(S3Retry, RetriesTransientFailuresWithinItsLimits) {
  struct Case {
    AttemptOutcome outcome;
    milliseconds each;
    double random;
    unsigned maximum, attempts;
    milliseconds elapsed;
  };
  auto const lost = Failure{Failure::Kind::lost, ""};
  unsigned const usual = RetryPolicy().maximumAttempts;
  Case const cases[] = {
      {Failure{Failure::Kind::permanent, ""}, milliseconds(1), 0, usual, 1, milliseconds(1)},
      {status(429), milliseconds(1), 0, usual, 10, milliseconds(10)},
      {status(500), milliseconds(1), 0.5, 4, 4, milliseconds(4 + 50 + 100 + 200)},
      {status(503), milliseconds(1), 0.5, 2, 2, milliseconds(2 + 50)},
      {lost, seconds(10), 0, usual, 3, seconds(30)},
      {lost, seconds(100), 0, usual, 1, seconds(100)},
      {status(200), milliseconds(1), 0, 3, 3, milliseconds(3)},
      {status(503, seconds(4)), milliseconds(0), 0, usual, 8, seconds(28)},
      {status(503, seconds(1000000000000)), milliseconds(1), 0, usual, 1, milliseconds(1)},
  };
  for (Case const& c : cases) {
    FakeStore store(c.outcome, c.each, c.random);
    RetryPolicy policy;
    policy.maximumAttempts = c.maximum;
    RequestOutcome const outcome =
        getWithRetries(store, store, policy, {}, [](Response const&) { return "malformed"; });
    EXPECT_EQ(outcome.attempts, c.attempts);
    EXPECT_EQ(outcome.elapsed, c.elapsed) << outcome.elapsed.count() << " ms";
  }
}

TEST(S3Client, AsksAnUnreachableStoreAgainAfterTwiceTheTimeThatWasLost) {
  auto owned = std::make_unique<FakeStore>(Failure{Failure::Kind::unreachable, ""}, seconds(1), 0);
  FakeStore& store = *owned;
  Configuration configuration;
  configuration.endpoint = "http://store";
  configuration.maximumAttempts = 1;
  Client client(configuration, std::move(owned), store);
  for (auto const& [waited, asks] : {std::pair(0, true), {0, false}, {1999, false}, {1, true}}) {
    store.wait(milliseconds(waited));
    milliseconds const before = store.now();
    PageCheck check("", false);
    EXPECT_THROW(client.list({.bucket = "b"}, check, vfs::IRIAccess::fromWrittenForm(u"s3://b", 2, 6)), vfs::Exception);
    EXPECT_EQ(store.now() - before, seconds(asks ? 1 : 0)) << waited;
  }
}

}  // namespace
}  // namespace foundation::storage::s3
