#include <algorithm>
#include <chrono>
#include <climits>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

// In memory, as trees this large would take too long on a disk. The time limit allows for slow machines and sanitizers;
// anything worse than linear exceeds it by far.
class LargeFolders : public testing::Test {
 protected:
  ~LargeFolders() override { EXPECT_LT(std::chrono::steady_clock::now() - start_, std::chrono::seconds(100)); }

  TemporaryFolder folder_{"/dev/shm"};

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

TEST_F(LargeFolders, AMillionEntries) {
  constexpr int entries = 1'000'000;
  int const handle = ::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int i = 0; i < entries; ++i) {
    ASSERT_EQ(::mknodat(handle, ("file-" + std::to_string(i)).c_str(), S_IFREG | 0644, 0), 0);
  }
  ::close(handle);
  auto const all = search("*", folder_.path());
  ASSERT_EQ(all.size(), std::size_t{entries});
  EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
  ReadSession const session;
  EXPECT_EQ(search("*99999*", folder_.path()).size(), 19U);
}

TEST_F(LargeFolders, DeeperThanPathMax) {
  // Nested folders named "d", each with a file "f".
  constexpr int depth = 2500;
  std::string deepest;
  int folder = ::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int i = 0; i < depth; ++i, deepest += "d/") {
    ASSERT_EQ(::mkdirat(folder, "d", 0755), 0);
    ASSERT_EQ(::mknodat(folder, "f", S_IFREG | 0644, 0), 0);
    int const next = ::openat(folder, "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::close(folder);
    folder = next;
  }
  ::close(folder);
  // A path has at most PATH_MAX bytes, including the final NUL. The last folder with such a path can still be listed.
  std::size_t const reached = (PATH_MAX - 1 - folder_.path().size()) / 2;
  auto const all = search("**", folder_.path());
  ASSERT_EQ(all.size(), 2 * (reached + 1));
  EXPECT_EQ(all[reached] + "/", deepest.substr(0, 2 * reached + 2));
  expectSearch({deepest.substr(0, 2000)}, deepest.substr(0, 2000), folder_.path());
  for (auto const* const last : {"", "f", "*", "**"}) EXPECT_EQ(search(deepest + last, folder_.path()), Strings());
}

TEST_F(LargeFolders, PatternsOfManySegments) {
  folder_.addFile(std::string(255, 'a'));
  std::string all;
  std::string deep;
  for (int i = 0; i < 2000; ++i) {
    all += "**/";
    deep += "*/";
  }
  expectSearch({std::string(255, 'a')}, all + "a*", folder_.path());
  expectSearch({}, deep, folder_.path());
  expectSearch({}, std::string(256, 'a'), folder_.path());
}

}  // namespace
}  // namespace korvan::test
