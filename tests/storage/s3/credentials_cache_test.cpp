#include "foundation/storage/s3/credentials/credentials_cache.hpp"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::s3 {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// What a test makes of the source: it may change while the source is used.
struct Behaviour {
  std::atomic<int> fetches = 0;
  std::atomic<int> lifetime = 0;  // in seconds; 0 for credentials that don't expire
  std::atomic<bool> fails = false;
  std::atomic<bool> exists = true;
  std::atomic<bool> hangs = false;
  std::atomic<int> time = 1000;  // the clock, in seconds
};

class FakeSource final : public CredentialsSource {
 public:
  explicit FakeSource(Behaviour& behaviour) : behaviour_(behaviour) {}

  std::string name() const override { return "a test"; }

  std::optional<Credentials> fetch() override {
    int const number = ++behaviour_.fetches;
    do {
      utThrowIfInterruptPending();
      std::this_thread::sleep_for(milliseconds(20));
    } while (behaviour_.hangs);
    if (behaviour_.fails) throw CredentialsError("refused");
    if (!behaviour_.exists) return std::nullopt;
    Credentials credentials{std::to_string(number), "secret"};
    if (behaviour_.lifetime != 0)
      credentials.expiration = std::chrono::sys_seconds(seconds(behaviour_.time + behaviour_.lifetime));
    return credentials;
  }

 private:
  Behaviour& behaviour_;
};

struct S3CredentialsCache : testing::Test {
  // The number of the fetch that the present credentials come from, "none", or the message of the error.
  std::string current() {
    try {
      auto const credentials = cache.current();
      return credentials ? credentials->accessKey : "none";
    } catch (CredentialsError const& error) {
      return error.what();
    }
  }

  Behaviour behaviour;
  CredentialsCache cache{std::make_unique<FakeSource>(behaviour),
                         [this] { return CredentialsCache::Time(seconds(behaviour.time)); }};
};

TEST_F(S3CredentialsCache, RenewsBeforeTheExpirationAndOutlivesFailures) {
  std::string const refused = "no credentials from a test: refused";
  struct Step {
    int time, lifetime;
    bool fails;
    std::string expected;
    int fetches;
  };
  // Valid for an hour, so renewed from 1000 + 3600 - 300 on; a failure is repeated after a second at the earliest.
  for (Step const& step : {Step{1000, 3600, true, refused, 1},
                           {1000, 3600, false, refused, 1},
                           {1001, 3599, false, "2", 2},
                           {4299, 10, false, "2", 2},
                           {4300, 10, true, "2", 3},
                           {4300, 10, false, "2", 3},
                           {4599, 10, true, "2", 4},
                           {4600, 10, true, refused, 5},
                           {4601, 10, false, "6", 6},
                           // Short-lived ones are renewed after half of their life.
                           {4605, 10, false, "6", 6},
                           {4606, 10, false, "7", 7},
                           {5000, -1, false, "no credentials from a test: the credentials have already expired", 8},
                           {5001, 0, false, "9", 9},
                           {2000000000, 0, true, "9", 9}}) {
    behaviour.time = step.time;
    behaviour.lifetime = step.lifetime;
    behaviour.fails = step.fails;
    EXPECT_EQ(current(), step.expected) << step.time;
    EXPECT_EQ(behaviour.fetches, step.fetches) << step.time;
  }
}

TEST_F(S3CredentialsCache, AsksAgainForWhatDidNotExistAndForWhatTheStoreRejects) {
  behaviour.exists = false;
  EXPECT_EQ(current() + current(), "nonenone");
  behaviour.exists = true;
  behaviour.time += 600;
  behaviour.lifetime = 100;
  EXPECT_EQ(current(), "2");
  auto const rejected = cache.latest();
  EXPECT_TRUE(cache.reject(rejected));
  EXPECT_EQ(current(), "3");
  EXPECT_TRUE(cache.reject(rejected));  // by another thread, later
  EXPECT_EQ(current(), "3");
  behaviour.lifetime = 0;
  cache.reject(cache.latest());
  EXPECT_EQ(current(), "4");
  EXPECT_FALSE(cache.reject(cache.latest()));
}

TEST_F(S3CredentialsCache, OneThreadFetchesForAll) {
  auto const ask = [&](std::string const& expected) {
    return std::thread([=, this] { EXPECT_EQ(current(), expected); });
  };
  behaviour.lifetime = 100;
  behaviour.hangs = true;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) threads.push_back(ask("1"));
  while (behaviour.fetches == 0) std::this_thread::yield();
  behaviour.hangs = false;
  for (std::thread& each : threads) each.join();

  behaviour.time += 60;
  behaviour.hangs = true;
  std::thread renewing = ask("2");
  while (behaviour.fetches == 1) std::this_thread::yield();
  EXPECT_EQ(current(), "1");  // doesn't wait for the renewal
  behaviour.hangs = false;
  renewing.join();
  EXPECT_EQ(behaviour.fetches, 2);
}

TEST_F(S3CredentialsCache, AnInterruptEndsTheWaitOfItsThreadOnly) {
  std::atomic<bool> interrupted = false;
  behaviour.hangs = true;
  auto const interruptible = [&] {
    utInterruptScope const scope(&interrupted);
    EXPECT_THROW(cache.current(), Quindarel::System::InterruptException);
  };
  std::thread fetching(interruptible);
  while (behaviour.fetches == 0) std::this_thread::yield();
  std::thread waiting(interruptible);
  std::thread other([&] { EXPECT_EQ(current(), "2"); });
  interrupted = true;
  fetching.join();
  waiting.join();
  behaviour.hangs = false;
  other.join();
}

TEST_F(S3CredentialsCache, ControlCharactersAreRefused) {
  std::pair<Credentials, std::string> const cases[] = {
      {{"a\nb", "hush"}, "the access key contains a"},     {{"a", "hush\r"}, "the secret key contains a"},
      {{"a", {"hush\0", 5}}, "the secret key contains a"}, {{"a", "hush", "hush\x7F"}, "the session token contains a"},
      {{"", "hush"}, "the access key is empty"},           {{"a", ""}, "the secret key is empty"},
  };
  for (auto const& [credentials, expected] : cases) {
    try {
      fixedCredentials("a test", credentials)->current();
      ADD_FAILURE() << "no " << expected;
    } catch (CredentialsError const& error) {
      EXPECT_EQ(std::string(error.what()).rfind("no credentials from a test: " + expected, 0), 0U) << error.what();
      EXPECT_EQ(std::string(error.what()).find("hush"), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace foundation::storage::s3
