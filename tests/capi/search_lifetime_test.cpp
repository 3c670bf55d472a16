// Searches that wait, are cancelled, closed early or found in another process.

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "quindarel/interrupt/interrupt_poll.hpp"
#include "support/c_interface_fixture.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

TEST_F(CInterface, DeliversWhileTheSearchWaitsAndCancelsItAlone) {
  serve(Tree().addFile("a/1").addFile("b/2"));
  std::atomic<int> entries = 0;
  std::atomic<bool> waits = true;
  provider_->onEntry = [&] {
    if (++entries <= 3) return;
    for (; waits; std::this_thread::sleep_for(std::chrono::milliseconds(1))) utThrowIfInterruptPending();
  };
  CSearch search("*/*", "mem:///");
  EXPECT_EQ(search.next(), KGLOB_OK);
  EXPECT_EQ(search.matches, Strings{"a/1"});
  EXPECT_EQ(search.next(0), KGLOB_TIMED_OUT);
  EXPECT_EQ(search.next(30), KGLOB_TIMED_OUT);
  EXPECT_EQ(kglob_error(search), nullptr);
  kglob_progress progress{};
  progress.size = offsetof(kglob_progress, bytes);
  progress.bytes = 7;
  kglob_get_progress(search, &progress);
  EXPECT_EQ((std::array{progress.folders, progress.entries, progress.bytes}), (std::array<std::uint64_t, 3>{2, 3, 7}));

  CSearch other("*/*", "mem:///");
  auto const start = std::chrono::steady_clock::now();
  std::thread canceller([&] { kglob_cancel(search); });
  EXPECT_EQ(search.finish(), KGLOB_INTERRUPTED);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  canceller.join();
  EXPECT_STREQ(kglob_error(search)->identifier, "KORVAN:interpreter:Interrupted");
  EXPECT_EQ(search.next(), KGLOB_INTERRUPTED) << "still the error";
  waits = false;
  EXPECT_EQ(other.finish(), KGLOB_OK);
  EXPECT_EQ(other.matches, (Strings{"a/1", "b/2"}));
}

TEST(CInterfaceWithoutASearch, ReportsALackOfMemory) {
  char const* block = "";
  std::size_t length = 1;
  EXPECT_EQ(kglob_next_block(nullptr, -1, &block, &length), KGLOB_OUT_OF_MEMORY);
  EXPECT_EQ(length, 0U);
  EXPECT_STREQ(kglob_error(nullptr)->identifier, "KORVAN:interpreter:OutOfMemory");
  EXPECT_EQ(kglob_next_failure(nullptr), nullptr);
  EXPECT_EQ(kglob_next_pattern(nullptr), 0);
  kglob_progress progress{sizeof progress, 1, 1, 1, 1};
  kglob_get_progress(nullptr, &progress);
  EXPECT_EQ(progress.folders + progress.bytes, 0U);
  kglob_cancel(nullptr);
  kglob_close(nullptr);
}

TEST_F(CInterface, RefusesToGoOnInAForkedProcess) {
  serveLongPaths();
  CSearch search(longPaths_, "mem:///");
  pid_t const child = fork();
  if (child == 0) {
    bool const refused = search.next() == KGLOB_FAILED && kglob_next_failure(search) == nullptr;
    kglob_close(search);
    _exit(refused ? 0 : 1);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(search.finish(), KGLOB_OK);
}

std::ptrdiff_t countEntries(char const* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

TEST_F(CInterface, ClosedHalfWayLeavesNothingBehind) {
  serveLongPaths();
  TemporaryFolder const folder;
  folder.addFile("a/b");
  folder.addFile("c");
  CSearch(longPaths_, "mem:///").next();  // with the first thread, a sanitizer may start one of its own
  auto const descriptors = countEntries("/proc/self/fd");
  auto const threads = countEntries("/proc/self/task");
  for (int i = 0; i < 10000; ++i) {
    CSearch search(i % 2 == 0 ? longPaths_ : "**", i % 2 == 0 ? "mem:///" : folder.path());
    ASSERT_EQ(i % 3 == 0 ? KGLOB_OK : search.next(), KGLOB_OK);
  }
  EXPECT_EQ(countEntries("/proc/self/fd"), descriptors);
  // The kernel may still be removing a thread that has been joined.
  for (int i = 0; i < 100 && countEntries("/proc/self/task") != threads; ++i) ::usleep(10'000);
  EXPECT_EQ(countEntries("/proc/self/task"), threads);
}

}  // namespace
}  // namespace korvan::test
