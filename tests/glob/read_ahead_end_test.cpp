// What ends reading ahead, and what mustn't.

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "quindarel/interrupt/interrupt_exception.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"
#include "support/read_ahead_fixture.hpp"

namespace korvan::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Operation = MemoryProvider::Operation;
using Stream = io::internal::GlobStream;

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

// Another thread has what the caller lacks, so none goes on.
TEST_F(ReadAhead, EndsWhereTheCallerLacksDescriptors) {
  std::atomic<bool> isRefused = false;
  auto const own = std::this_thread::get_id();
  Tree tree = wideTree(400);
  tree.addFile("d2000/file");
  serve(tree, 8, [&] {
    if (std::this_thread::get_id() == own && isRefused.exchange(false))
      throw vfs::exceptionOfErrno(EMFILE, vfs::AbsoluteIRI(u"mem:///"));
    sleepShortly();
  });
  ReadSession const session;
  Stream stream(u"d1*/*", u"mem:///", false);
  for (int i = 0; i < 100; ++i) ASSERT_TRUE(stream.next());
  int const before = byOthers_;
  isRefused = true;
  list(1000);
  while (stream.next()) {
  }
  EXPECT_FALSE(isRefused);
  EXPECT_GT(before, 0);
  EXPECT_LE(byOthers_, before + 8);
  EXPECT_EQ(session.activity().folders, 402U);
}

TEST_F(ReadAhead, GoesOnWhereTheSearchContinuesElsewhere) {
  serve(wideTree(600), 8, sleepShortly);
  ReadSession const session;
  Stream stream(u"*/*", u"mem:///", false);
  for (int i = 0; i < 100; ++i) ASSERT_TRUE(stream.next());
  settledRequests();
  int const before = byOthers_;
  for (int i = 300; i < 500; ++i) list(i);
  EXPECT_GT(byOthers_, before + 100);
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
