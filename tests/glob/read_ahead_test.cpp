#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sched.h>

#include "foundation/storage/file/file_provider.hpp"
#include "support/oracle.hpp"
#include "support/read_ahead_fixture.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Operation = MemoryProvider::Operation;

// Keeps the calling thread, and those that it starts, on so many cores; false if there aren't as many.
class OnCores {
 public:
  explicit OnCores(int count) {
    sched_getaffinity(0, sizeof before_, &before_);
    cpu_set_t some;
    CPU_ZERO(&some);
    for (std::size_t core = 0; core < CPU_SETSIZE && CPU_COUNT(&some) < count; ++core) {
      if (CPU_ISSET(core, &before_)) CPU_SET(core, &some);
    }
    areThere = CPU_COUNT(&some) == count && sched_setaffinity(0, sizeof some, &some) == 0;
  }
  ~OnCores() { sched_setaffinity(0, sizeof before_, &before_); }
  OnCores(OnCores const&) = delete;
  OnCores& operator=(OnCores const&) = delete;
  bool areThere;

 private:
  cpu_set_t before_;
};

TEST(RandomReadAhead, FindsTheSameInTheSameOrderWithEveryLimit) {
  std::mt19937 random(2);
  for (int round = 0; round < 10; ++round) {
    bool const isFlat = round % 2 == 0;
    Tree const tree = Tree::random(random, 120, !isFlat);
    MemoryProvider::Options options;
    options.subtreePage = isFlat ? 3 : 0;
    auto const store = std::make_shared<MemoryProvider>(tree, options);
    TemporaryFolder const folder;
    tree.writeTo(folder);
    for (int i = 0; i < 6; ++i) {
      std::string const pattern = i == 0 ? "**/*" : randomPattern(random);
      if (isFlat && hasDotOrEmptySegment(pattern)) continue;  // a flat store has no such folders
      auto const expected = expectedMatches(tree, Tree::searchRoot, pattern, true);
      for (std::size_t const limit : {1U, 2U, 32U}) {
        SCOPED_TRACE(testing::Message() << "round " << round << ": " << pattern << ", limit " << limit);
        std::atomic<std::size_t> inFlight{0};
        auto const hook = [&inFlight, limit](auto, auto const&) {
          EXPECT_LE(++inFlight, limit);
          std::this_thread::sleep_for(150us);
          --inFlight;
        };
        store->forgetRequests();
        ServedScheme const mem(u"mem", std::make_shared<HookedProvider>(store, 8, hook));
        ServedScheme const disk(u"disk", std::make_shared<HookedProvider>(
                                             std::make_shared<foundation::storage::file::FileProvider>(), 8, hook));
        for (auto const& root : {"mem:///" + Tree::searchRoot, "disk://" + folder.path() + "/" + Tree::searchRoot}) {
          ReadSession const session(ReadSession::defaultMemoryBound, {.readsInFlight = limit});
          ASSERT_EQ(search(pattern, root, true), expected) << root;
          ASSERT_TRUE(session.failedListings().empty()) << session.failedListings()[0].what();
        }
        EXPECT_TRUE(isFlat || hasDotOrEmptySegment(pattern) || store->mostRequests(Operation::list) <= 1);
      }
    }
  }
}

TEST_F(ReadAhead, TimeFallsWithTheLimitWhereReadsWait) {
  Tree tree;
  for (int i = 0; i < 16; ++i) {
    for (int j = 0; j < 25; ++j) tree.addFile(numbered('d', i) + "/" + numbered('e', j) + "/file.txt");
  }
  for (std::string const pattern : {"**/*.txt", "*/*/*.txt", "*/*/file.txt"}) {
    Clock::duration alone{};
    for (std::size_t const limit : {1U, 2U, 8U, 32U}) {
      SCOPED_TRACE(pattern + " with a limit of " + std::to_string(limit));
      serve(tree, 4, [] { std::this_thread::sleep_for(2ms); });
      ReadSession const session(ReadSession::defaultMemoryBound, {.readsInFlight = limit});
      auto const start = Clock::now();
      EXPECT_EQ(search(pattern, "mem:///").size(), 400U);
      auto const time = Clock::now() - start;
      std::size_t const requests = store_->requests();
      EXPECT_EQ(session.activity().requests, requests) << "those of other threads included";
      EXPECT_EQ(session.activity().bytes, 10 * requests);
      EXPECT_GE(static_cast<std::size_t>(most_), (limit * 3 + 3) / 4);
      EXPECT_LE(static_cast<std::size_t>(most_), limit);
      EXPECT_EQ(byOthers_ == 0, limit == 1);
      EXPECT_TRUE(limit != 2 || static_cast<std::size_t>(byOthers_) <= requests * 3 / 4) << "one of the two is its own";
      if (limit == 1) alone = time;
      EXPECT_LE(time * static_cast<int>(limit) / 16, alone);
    }
  }
}

// Where a store's folders are too large for pages of keys, names are looked up in each: the same requests, but many at
// a time. Where only some are, pages answer most lookups, which mustn't be made ahead.
TEST(StoreReadAhead, LooksUpNamesInManyFoldersAtATime) {
  for (bool const allAreLarge : {true, false}) {
    Tree tree;
    for (int i = 0; i < 300; ++i) {
      for (int j = allAreLarge || i % 5 == 0 ? 0 : 6; j < 8; ++j)
        tree.addFile(numbered('d', i) + "/" + numbered('f', j));
    }
    MemoryProvider::Options options;
    options.subtreePage = 5;
    auto const store = std::make_shared<MemoryProvider>(tree, options);
    std::size_t lookups[2] = {};
    std::size_t requests[2] = {};
    std::atomic<int> inFlight{0};
    int most = 0;  // in flight when a request ended
    for (bool const readsAhead : {false, true}) {
      store->forgetRequests();
      most = 0;
      std::mutex mutex;
      auto const hook = [&](auto, auto const&) {
        ++inFlight;
        std::this_thread::sleep_for(2ms);
        std::lock_guard const lock(mutex);
        most = std::max(most, inFlight--);
      };
      ServedScheme const mem(u"mem", std::make_shared<HookedProvider>(store, 2, hook));
      ReadSession const session(ReadSession::defaultMemoryBound, {.readsInFlight = readsAhead ? 16U : 1U});
      EXPECT_EQ(search("*/f1007", "mem:///").size(), 300U);
      lookups[readsAhead] = store->requests(MemoryProvider::Operation::kind);
      requests[readsAhead] = store->requests();
    }
    EXPECT_LE(lookups[1], lookups[0] + 32);
    EXPECT_LE(requests[1], requests[0] + store->pages() / 2 + 32);
    EXPECT_TRUE(!allAreLarge || most > 8) << most;
  }
}

TEST_F(ReadAhead, UsesTheSpareCoresWhereReadsCompute) {
  auto const compute = [] {
    for (auto const end = Clock::now() + 100us; Clock::now() < end;) {
    }
  };
  for (int const cores : {1, 2}) {
    OnCores const restricted(cores);
    if (!restricted.areThere) GTEST_SKIP() << "the machine has fewer than " << cores << " cores";
    serve(wideTree(600), 32, compute);
    ReadSession const session;
    EXPECT_EQ(search("**", "mem:///").size(), 1200U);
    EXPECT_LE(most_, cores);
    EXPECT_EQ(byOthers_ > 0, cores > 1);
  }
}

TEST_F(ReadAhead, StartsNoThreadForASmallSearchOrWithoutAnAnnouncement) {
  serve(wideTree(30), 32, [] {});
  {
    ReadSession const session;
    EXPECT_EQ(search("**", "mem:///").size(), 60U);
  }
  serve(wideTree(400), 32, sleepShortly);
  {
    ReadSession const session;
    for (int i = 0; i < 100; ++i) list(i);
  }
  EXPECT_EQ(byOthers_, 0);
}

}  // namespace
}  // namespace korvan::test
