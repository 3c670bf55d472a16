#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/memory_provider.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

// The first searches of the process, so that they compete for everything that is initialised once.
TEST(Threads, SearchesDoNotDisturbOneAnother) {
  Tree const tree =
      Tree().addFile("a/b/c.txt").addFile("a/d.txt").addFile("e.txt").addFolder(".h/f").addLink("up", "a");
  TemporaryFolder const folder;
  tree.writeTo(folder);
  ServedScheme const mem(u"mem", std::make_shared<MemoryProvider>(tree));
  Strings const patterns = {"**", "**/*.txt", "*/", "**/**/b/*", "a/d.txt", "*/*/*"};
  Strings const roots = {folder.path(), "file://" + folder.path(), "mem:///"};

  std::vector<Strings> wrong(4);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < wrong.size(); ++t) {
    threads.emplace_back([&, t] {
      for (std::size_t i = 0; i < 120; ++i) {
        std::string const& pattern = patterns[(i + t) % patterns.size()];
        std::string const& root = roots[i % roots.size()];
        std::optional<ReadSession> session;
        if ((i + t) % 2 == 0) session.emplace();
        if (search(pattern, root) != expectedMatches(tree, "", pattern, false)) wrong[t].push_back(pattern + root);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  for (auto const& each : wrong) EXPECT_EQ(each, Strings{});
}

TEST(Threads, OneProviderAndItsSchemeMayBeReplacedMeanwhile) {
  auto const first = std::make_shared<MemoryProvider>(Tree().addFile("a"));
  auto const second = std::make_shared<MemoryProvider>(Tree().addFile("b"));
  ServedScheme const mem(u"mem", first);
  std::thread searcher([] {
    for (int i = 0; i < 500; ++i) {
      auto const found = search("*", "mem:///");
      EXPECT_TRUE(found == Strings{"a"} || found == Strings{"b"}) << testing::PrintToString(found);
    }
  });
  for (int i = 0; i < 500; ++i) vfs::StorageSystem::instance().registerProvider(u"mem", i % 2 == 0 ? second : first);
  searcher.join();
}

}  // namespace
}  // namespace korvan::test
