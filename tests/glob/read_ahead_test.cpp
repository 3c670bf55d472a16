#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/folder.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "foundation/storage/vfs/storage_system.hpp"
#include "quindarel/interrupt/interrupt_exception.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"
#include "support/memory_provider.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"

namespace {

namespace vfs = foundation::storage::vfs;
using korvan::test::MemoryProvider;
using korvan::test::search;
using korvan::test::Tree;
using Operation = MemoryProvider::Operation;

std::string numbered(char letter, int number) {
  return letter + std::to_string(1000 + number);
}

// Enough nested folders to be read ahead, and some entries for which a descent leaves the predicted order.
Tree largeTree() {
  Tree tree;
  for (int i = 0; i < 60; ++i) {
    std::string const top = numbered('d', i);
    for (int j = 0; j < 10; ++j) tree.addFile(top + "/" + numbered('e', j) + "/f/file.txt");
  }
  tree.addFile("d1010/.dot/folder/file.txt")
      .addFile("d1020/e1003/.dot/file")
      .addLink("d1010/e1004/link", "d1030/e1001");
  std::string chain = "z";
  for (int i = 0; i < 100; ++i) chain += "/z";
  tree.addFile(chain + "/file.txt");
  return tree;
}

class ReadAhead : public testing::Test {
 protected:
  void serve(Tree const& tree) {
    store_ = std::make_shared<MemoryProvider>(Tree(tree));
    served_.emplace(u"mem", store_);
  }

  static std::size_t list(std::string const& path) {
    vfs::Folder const folder(vfs::AbsoluteIRI(korvan::test::toText("mem:///" + path)),
                             Quindarel::KorvanStorageSystem::GetStorageSystemReference());
    auto const listing = folder.listAll(u"*");
    return static_cast<std::size_t>(std::distance(listing.begin(), listing.end()));
  }

  // Waits for another thread.
  template <class Condition>
  static bool inTime(Condition const& condition) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition() && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
  }
  bool listsInTime(std::size_t atLeast) const {
    return inTime([&] { return store_->requests() >= atLeast; });
  }

  std::shared_ptr<MemoryProvider> store_;
  std::optional<korvan::test::ServedScheme> served_;
};

TEST_F(ReadAhead, FindsTheSameAndListsNoFolderTwice) {
  Tree const tree = largeTree();
  serve(tree);
  for (bool const dotFiles : {false, true}) {
    for (std::string const pattern : {"**", "**/", "**/*.txt", "d*/**/f/*", "*/*/*", "*/e1003/**"}) {
      SCOPED_TRACE(pattern + (dotFiles ? " with dot files" : ""));
      store_->forgetRequests();
      vfs::ReadSession const session;
      EXPECT_EQ(search(pattern, "mem:///", dotFiles), expectedMatches(tree, "", pattern, dotFiles));
      EXPECT_EQ(search("**", "mem:///", dotFiles), expectedMatches(tree, "", "**", dotFiles));
      EXPECT_EQ(store_->mostRequests(Operation::list), 1U);
    }
  }
}

TEST_F(ReadAhead, ReportsAFailureOnce) {
  serve(largeTree());
  store_->failures[{Operation::list, "d1040/e1005"}] = vfs::ErrorCode::permissionDenied;
  vfs::ReadSession const session;
  std::size_t const found = search("**", "mem:///").size();
  EXPECT_EQ(found, expectedMatches(largeTree(), "", "**", false).size() - 2);
  EXPECT_EQ(search("**", "mem:///").size(), found);
  ASSERT_EQ(session.failedListings().size(), 1U);
  EXPECT_EQ(session.failedListings()[0].getErrorCode(), 2);
  EXPECT_EQ(store_->mostRequests(Operation::list), 1U);
  std::size_t const requests = store_->requests();
  list("d1020/e1003/.dot");
  EXPECT_EQ(store_->requests(), requests + 1) << "no search goes there, so it isn't read ahead";
}

TEST_F(ReadAhead, StaysWithinItsWindowAndNeedsADescent) {
  constexpr int folders = 1000;
  constexpr std::size_t furthest = 300;
  Tree tree;
  for (int i = 0; i < folders; ++i) tree.addFile(numbered('d', i) + "/file");
  serve(tree);
  struct Case {
    int read;
    int step;
    bool readsAhead;
  };
  for (auto const& [read, step, readsAhead] : {Case{20, 1, false}, Case{400, 2, false}, Case{100, 1, true}}) {
    SCOPED_TRACE(testing::Message() << read << " folders, every " << step);
    store_->forgetRequests();
    std::size_t const asked = static_cast<std::size_t>(read) + 1;
    {
      vfs::ReadSession const session;
      EXPECT_EQ(list(""), std::size_t{folders});
      for (int i = 0; i < read; ++i) EXPECT_EQ(list(numbered('d', i * step)), 1U);
      EXPECT_TRUE(!readsAhead || listsInTime(asked + 1));
      EXPECT_EQ(session.activity().folders, asked);
    }
    std::size_t const ahead = store_->requests() - asked;
    EXPECT_EQ(ahead > 0, readsAhead);
    EXPECT_LE(ahead, furthest);
    EXPECT_EQ(store_->mostRequests(Operation::list), 1U);
  }
}

TEST_F(ReadAhead, CachesWhatItReadWhenTheDescentIsAbandoned) {
  Tree tree;
  for (int i = 0; i < 1000; ++i) tree.addFile(numbered('d', i) + "/file");
  serve(tree);
  store_->failures[{Operation::list, "d1070"}] = vfs::ErrorCode::other;
  vfs::ReadSession const session;
  list("");
  for (int i = 0; i < 50; ++i) list(numbered('d', i));
  ASSERT_TRUE(listsInTime(100));
  for (int i = 999; i > 950; --i) EXPECT_EQ(list(numbered('d', i)), 1U);
  EXPECT_TRUE(session.failedListings().empty()) << "nobody asked for that folder";
  EXPECT_THROW(list("d1070"), vfs::Exception);
  EXPECT_THROW(list("d1070"), vfs::Exception);
  EXPECT_EQ(session.failedListings().size(), 1U);
  for (int i = 80; i < 1000; ++i) EXPECT_EQ(list(numbered('d', i)), 1U);
  EXPECT_EQ(store_->mostRequests(Operation::list), 1U);
}

TEST_F(ReadAhead, TheCallerReadsAheadWhereTheHelperIsHeldUp) {
  Tree tree;
  for (int i = 0; i < 1000; ++i) tree.addFile(numbered('d', i) + "/file");
  serve(tree);
  auto const own = std::this_thread::get_id();
  std::atomic<bool> held = false;
  std::atomic<int> readMeanwhile = 0;
  vfs::ReadSession const session;
  list("");
  store_->onEntry = [&] {
    if (std::this_thread::get_id() == own) {
      if (held) ++readMeanwhile;
    } else if (!held.exchange(true)) {
      sigset_t blocked;
      pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
      EXPECT_EQ(sigismember(&blocked, SIGINT), 1) << "signals are for the host's own threads";
      inTime([&] { return readMeanwhile >= 10; });
    }
  };
  for (int i = 0; i < 40; ++i) EXPECT_EQ(list(numbered('d', i)), 1U);
  ASSERT_TRUE(inTime([&] { return held.load(); }));
  for (int i = 40; i < 1000; ++i) EXPECT_EQ(list(numbered('d', i)), 1U);
  EXPECT_GE(readMeanwhile, 10);
  EXPECT_EQ(store_->mostRequests(Operation::list), 1U);
}

TEST_F(ReadAhead, ALackOfDescriptorsIsMetOnlyWithoutTheHelper) {
  Tree tree;
  for (int i = 0; i < 1000; ++i) tree.addFile(numbered('d', i) + "/file");
  serve(tree);
  auto const own = std::this_thread::get_id();
  std::atomic<bool> helperReads = false;
  std::atomic<bool> callerFailed = false;
  bool callerFails = false;
  store_->onEntry = [&] {
    bool const isHelper = std::this_thread::get_id() != own;
    if (isHelper) helperReads = true;
    if (isHelper ? inTime([&] { return callerFailed.load(); }) : callerFails && !callerFailed.exchange(true)) {
      throw vfs::exceptionOfErrno(EMFILE, vfs::AbsoluteIRI(u"mem:///"));
    }
  };
  vfs::ReadSession const session;
  list("");
  for (int i = 0; i < 40; ++i) EXPECT_EQ(list(numbered('d', i)), 1U);
  ASSERT_TRUE(inTime([&] { return helperReads.load(); }));
  callerFails = true;
  EXPECT_EQ(list("d1900"), 1U);
  EXPECT_TRUE(callerFailed);
  for (int i = 40; i < 1000; ++i) EXPECT_EQ(list(numbered('d', i)), 1U);
  EXPECT_TRUE(session.failedListings().empty()) << session.failedListings()[0].what();
}

TEST_F(ReadAhead, AnInterruptEndsIt) {
  serve(largeTree());
  for (int const entries : {100, 400, 1000, 1800}) {
    SCOPED_TRACE(entries);
    std::atomic<int> left = entries;
    store_->onEntry = [&left] {
      if (--left == 0) utSetInterruptPending(true);
    };
    {
      vfs::ReadSession const session;
      EXPECT_THROW(search("**", "mem:///"), Quindarel::System::InterruptException);
      EXPECT_TRUE(session.failedListings().empty());
    }
    utSetInterruptPending(false);
  }
}

}  // namespace
