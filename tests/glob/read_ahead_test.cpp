#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sched.h>

#include "foundation/storage/file/file_provider.hpp"
#include "foundation/storage/vfs/folder.hpp"
#include "quindarel/interrupt/interrupt_exception.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"
#include "support/hooked_provider.hpp"
#include "support/memory_provider.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Operation = MemoryProvider::Operation;
using Stream = io::internal::GlobStream;

std::string numbered(char letter, int number) {
  return letter + std::to_string(1000 + number);
}

// As many folders with one file as it says, side by side.
Tree wideTree(int folders) {
  Tree tree;
  for (int i = 0; i < folders; ++i) tree.addFile(numbered('d', i) + "/file");
  return tree;
}

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

class ReadAhead : public testing::Test {
 protected:
  void serve(Tree const& tree, std::size_t window, std::function<void()> const& onRead) {
    store_ = std::make_shared<MemoryProvider>(tree);
    most_ = inFlight_ = byOthers_ = 0;
    auto const own = std::this_thread::get_id();
    auto const hook = [this, own, onRead](Operation /*asked*/, vfs::AbsoluteIRI const& /*location*/) {
      int const now = ++inFlight_;
      for (int most = most_; now > most && !most_.compare_exchange_weak(most, now);) {
      }
      if (std::this_thread::get_id() != own) ++byOthers_;
      struct AtEnd {
        std::atomic<int>& inFlight;
        ~AtEnd() { --inFlight; }
      } const atEnd{inFlight_};
      vfs::countRequest(10);
      onRead();
    };
    served_.reset();
    served_.emplace(u"mem", std::make_shared<HookedProvider>(store_, window, hook));
  }

  // Waits until the number of requests has stopped growing.
  std::size_t settledRequests() const {
    for (std::size_t before = store_->requests();; before = store_->requests()) {
      std::this_thread::sleep_for(200ms);
      if (store_->requests() == before) return before;
    }
  }

  std::shared_ptr<MemoryProvider> store_;
  std::atomic<int> inFlight_{0};
  std::atomic<int> most_{0};      // in flight at any time
  std::atomic<int> byOthers_{0};  // reads on other threads than the test's
  std::optional<ServedScheme> served_;
};

void sleepShortly() {
  std::this_thread::sleep_for(1ms);
}

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
      requests[readsAhead] = store->requests();
    }
    EXPECT_LE(requests[1], requests[0] + 32);
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
    auto const system = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
    for (int i = 0; i < 100; ++i) {
      vfs::Folder const folder(vfs::AbsoluteIRI(toText("mem:///" + numbered('d', i))), system);
      EXPECT_NE(folder.listAll(u"*").begin(), folder.listAll(u"*").end());
    }
  }
  EXPECT_EQ(byOthers_, 0);
}

TEST_F(ReadAhead, ReadsNoFurtherThanItsBoundsAndNotAfterTheSearch) {
  Tree bigFolders;
  for (int i = 0; i < 400; ++i) {
    for (int j = 0; j < 100; ++j) bigFolders.addFile(numbered('d', i) + "/" + numbered('f', j) + std::string(100, 'x'));
  }
  constexpr std::size_t bound = 1 << 20;
  struct {
    Tree tree;
    std::size_t memory, window, leastAhead, mostAhead;
  } const cases[] = {{wideTree(3000), bound * 100, 32, 64, std::size_t{16} * 32},
                     {bigFolders, bound, 32, 8, bound / 4 / (std::size_t{100} * 112) + 32}};
  for (auto const& [tree, memory, window, leastAhead, mostAhead] : cases) {
    serve(tree, window, sleepShortly);
    ReadSession const session(memory);
    std::optional<Stream> stream(std::in_place, u"*/*", u"mem:///", false);
    while (session.activity().folders < 150) ASSERT_TRUE(stream->next());
    std::size_t const ahead = settledRequests() - session.activity().folders;
    EXPECT_GE(ahead, leastAhead);
    EXPECT_LE(ahead, mostAhead);
    while (store_->requests() - session.activity().folders > 64) ASSERT_TRUE(stream->next());
    stream.reset();
    std::size_t const atEnd = settledRequests();
    EXPECT_LE(atEnd - session.activity().folders, 128U) << "only what was in flight";
    EXPECT_EQ(settledRequests(), atEnd);
    EXPECT_EQ(store_->mostRequests(Operation::list), 1U);
    EXPECT_EQ(search("d1*/**", "mem:///").size() % 400, 0U);
    EXPECT_TRUE(memory == bound || store_->mostRequests(Operation::list) == 1U) << "what was read ahead is cached";
  }
}

TEST_F(ReadAhead, RemembersAndReportsAFailureOnceAndOnlyIfRequested) {
  serve(wideTree(400), 8, sleepShortly);
  for (std::string const failing : {"d1100", "d1300"})
    store_->failures[{Operation::list, failing}] = vfs::ErrorCode::other;
  ReadSession const session;
  {
    Stream stream(u"*/*", u"mem:///", false);
    for (int i = 0; i < 90; ++i) ASSERT_TRUE(stream.next());
    settledRequests();
    EXPECT_TRUE(session.failedListings().empty()) << "the search hasn't come to that folder";
    for (int i = 0; i < 110; ++i) ASSERT_TRUE(stream.next());
    settledRequests();
    EXPECT_EQ(session.failedListings().size(), 1U);
  }
  EXPECT_EQ(search("*/*", "mem:///").size(), 398U);
  EXPECT_EQ(search("*/*", "mem:///").size(), 398U);
  EXPECT_EQ(session.failedListings().size(), 2U);
  EXPECT_EQ(store_->mostRequests(Operation::list), 1U);
}

TEST_F(ReadAhead, ReadsNothingThatAnEarlierSearchHasRead) {
  serve(wideTree(400), 8, sleepShortly);
  ReadSession const session;
  EXPECT_EQ(search("d12*/*", "mem:///").size(), 100U);
  EXPECT_EQ(search("*/*", "mem:///").size(), 400U);
  EXPECT_GT(byOthers_, 0);
  EXPECT_EQ(store_->mostRequests(Operation::list), 1U);
}

TEST_F(ReadAhead, OtherThreadsBlockSignals) {
  std::atomic<int> open = 0;
  auto const own = std::this_thread::get_id();
  serve(wideTree(100), 8, [&] {
    sleepShortly();
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    if (std::this_thread::get_id() != own && sigismember(&blocked, SIGINT) == 0) ++open;
  });
  ReadSession const session;
  EXPECT_EQ(search("**", "mem:///").size(), 200U);
  EXPECT_GT(byOthers_, 0);
  EXPECT_EQ(open, 0);
}

// Where several threads lack descriptors, fewer may have enough.
TEST_F(ReadAhead, ALackOfDescriptorsIsMetWithFewerThreads) {
  for (int const enough : {1, 4}) {
    std::atomic<int> refused = 0;
    serve(wideTree(600), 32, [&] {
      if (inFlight_ > enough && ++refused > 0) throw vfs::exceptionOfErrno(EMFILE, vfs::AbsoluteIRI(u"mem:///"));
      sleepShortly();
    });
    ReadSession const session;
    EXPECT_EQ(search("**", "mem:///").size(), 1200U);
    EXPECT_LE(refused, 32);
    EXPECT_TRUE(session.failedListings().empty()) << session.failedListings()[0].what();
  }
}

TEST_F(ReadAhead, AnInterruptEndsItAtOnceAndSoDoesTheEndOfTheSession) {
  enum class End { flagOfTheProcess, flagOfTheSearch, close };
  for (End const end : {End::flagOfTheProcess, End::flagOfTheSearch, End::close}) {
    SCOPED_TRACE(static_cast<int>(end));
    std::atomic<int> answered = 0;
    serve(wideTree(3000), 33, [&] {
      auto const silence = ++answered > 500 ? 20s : 0s;
      sleepShortly();
      for (auto const until = Clock::now() + silence; Clock::now() < until; sleepShortly()) utThrowIfInterruptPending();
    });
    std::atomic<bool> flag = false;
    utInterruptScope const scope(&flag);
    Clock::time_point start;
    std::thread interrupter([&] {
      while (inFlight_ < 32 || answered < 532) sleepShortly();
      start = Clock::now();
      if (end == End::flagOfTheProcess) utSetInterruptPending(true);
      if (end == End::flagOfTheSearch) flag = true;
    });
    {
      ReadSession const session;
      if (end == End::close) {
        Stream stream(u"**", u"mem:///", false);
        for (int i = 0; i < 300; ++i) stream.next();
        interrupter.join();
      } else {
        EXPECT_THROW(search("**", "mem:///"), Quindarel::System::InterruptException);
        interrupter.join();
      }
      EXPECT_TRUE(session.failedListings().empty());
    }
    EXPECT_LT(Clock::now() - start, 1s) << "with 32 reads in flight";
    utSetInterruptPending(false);
  }
}

}  // namespace
}  // namespace korvan::test
