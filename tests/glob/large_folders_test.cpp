#include <algorithm>
#include <chrono>
#include <climits>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/storage/vfs/read_session.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace {

using foundation::storage::vfs::ReadSession;
using korvan::test::search;
using korvan::test::Strings;
using korvan::test::TemporaryFolder;

// Generous against slow machines and sanitizers; what grows faster than its input is far above.
constexpr std::chrono::seconds limit{60};

template <class Work>
void expectInTime(Work const& work) {
  auto const start = std::chrono::steady_clock::now();
  work();
  EXPECT_LT(std::chrono::steady_clock::now() - start, limit);
}

// Folders named "d" in one another, each with a file "f"; deeper than one path can tell.
void makeDeep(std::string const& top, int depth) {
  int folder = ::open(top.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int i = 0; i < depth; ++i) {
    ASSERT_EQ(::mkdirat(folder, "d", 0755), 0);
    ASSERT_EQ(::mknodat(folder, "f", S_IFREG | 0644, 0), 0);
    int const next = ::openat(folder, "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::close(folder);
    folder = next;
  }
  ::close(folder);
}

TEST(LargeFolders, AMillionEntries) {
  constexpr int entries = 1'000'000;
  TemporaryFolder const folder(TemporaryFolder::Place::memory);
  int const handle = ::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int i = 0; i < entries; ++i) {
    ASSERT_EQ(::mknodat(handle, ("file-" + std::to_string(i)).c_str(), S_IFREG | 0644, 0), 0);
  }
  ::close(handle);
  expectInTime([&] {
    auto const all = search("*", folder.path());
    ASSERT_EQ(all.size(), std::size_t{entries});
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
    EXPECT_EQ(all[1], "file-1");
    EXPECT_EQ(all[2], "file-10");
    ReadSession const session;
    EXPECT_EQ(search("*99999*", folder.path()).size(), 19U);
  });
}

TEST(LargeFolders, AThousandDeep) {
  constexpr int depth = 1000;
  TemporaryFolder const folder(TemporaryFolder::Place::memory);
  makeDeep(folder.path(), depth);
  expectInTime([&] {
    ReadSession const session;
    auto const all = search("**", folder.path());
    ASSERT_EQ(all.size(), std::size_t{2 * depth});
    std::string deepest = "d";
    for (int i = 1; i < depth; ++i) deepest += "/d";
    EXPECT_EQ(all[depth - 1], deepest);
    EXPECT_EQ(all.back(), "f");
    EXPECT_EQ(search(deepest, folder.path()), Strings{deepest});
    EXPECT_EQ(search("**/f", folder.path()).size(), std::size_t{depth});
  });
}

TEST(LargeFolders, DeeperThanAPathCanTell) {
  constexpr std::size_t depth = 2500;
  TemporaryFolder const folder(TemporaryFolder::Place::memory);
  makeDeep(folder.path(), depth);
  // A path has PATH_MAX bytes with its final NUL; what the last folder that one can tell holds is still listed.
  std::size_t const reached = (PATH_MAX - 1 - folder.path().size()) / 2;
  expectInTime([&] {
    EXPECT_EQ(search("**", folder.path()).size(), 2 * (reached + 1));
    std::string all;
    for (std::size_t i = 0; i < depth; ++i) all += "d/";
    for (std::string const& root : {folder.path(), "file://" + folder.path()}) {
      for (auto const* const last : {"", "f", "*", "**"}) EXPECT_EQ(search(all + last, root), Strings{}) << last;
    }
  });
}

TEST(LargeFolders, LongNamesAndManyStars) {
  TemporaryFolder const folder;
  constexpr int entries = 1000;
  for (int i = 0; i < entries; ++i) {
    std::string const number = std::to_string(entries + i);
    folder.addFile(std::string(255 - number.size(), 'a') + number);
  }
  std::string stars;
  for (int i = 0; i < 19; ++i) stars += "*a";
  expectInTime([&] {
    EXPECT_EQ(search(stars + "*1999", folder.path()).size(), 1U);
    EXPECT_EQ(search(stars + "*b", folder.path()).size(), 0U);
    EXPECT_EQ(search(stars + "*", folder.path()).size(), std::size_t{entries});
    EXPECT_EQ(search(std::string(256, 'a'), folder.path()), Strings{}) << "longer than a name can be";
    EXPECT_EQ(search(std::string(100000, 'a'), folder.path()), Strings{});
  });
}

TEST(LargeFolders, APatternOfManySegments) {
  TemporaryFolder const folder;
  folder.addFile("a");
  std::string pattern;
  for (int i = 0; i < 2000; ++i) pattern += "**/";
  expectInTime([&] {
    EXPECT_EQ(search(pattern + "a", folder.path()), Strings{"a"});
    std::string many;
    for (int i = 0; i < 2000; ++i) many += "*/";
    EXPECT_EQ(search(many, folder.path()), Strings{});
  });
}

}  // namespace
