#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/memory_provider.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

using Expected = std::vector<std::pair<std::string, Strings>>;
using vfs::SessionPolicy;

// Expects the same on a disk and with providers that say and don't say what the entries of their folders are.
void expectEverywhere(Expected const& expected, Tree const& tree, SessionPolicy const& policy,
                      std::string const& below = "") {
  TemporaryFolder const disk;
  tree.writeTo(disk);
  expectSearches(expected, disk.path() + "/" + below, policy);
  for (bool const hidesKinds : {false, true}) {
    MemoryProvider::Options options;
    options.hidesKinds = hidesKinds;
    ServedScheme const mem(u"mem", std::make_shared<MemoryProvider>(tree, options));
    expectSearches(expected, "mem:///" + below, policy);
  }
}

// What bash finds with globstar, which doesn't descend through links.
TEST(SessionPolicy, LinksAreListedAndNotDescended) {
  Tree tree;
  tree.addFile("t/d/x").addFile("t/d/e/x").addLink("t/d/up", "t").addLink("t/link", "t/d").addFile("t/none/y");
  SessionPolicy policy;
  policy.followLinks = false;
  expectEverywhere({{"**", {"d", "d/e", "d/e/x", "d/up", "d/x", "link", "none", "none/y"}},
                    {"**/", {"d/", "d/e/", "d/up/", "link/", "none/"}},
                    {"**/*", {"d", "link", "none", "d/e", "d/up", "d/x", "d/e/x", "none/y"}},
                    {"**/x", {"d/x", "d/e/x"}},
                    {"*/x", {"d/x", "link/x"}},
                    {"link/x", {"link/x"}},
                    {"**/*/x", {"d/x", "link/x", "d/e/x"}},
                    {"**/*/up/*/x", {"d/up/d/x", "d/up/link/x", "link/up/d/x", "link/up/link/x"}},
                    {"link/**", {"link", "link/e", "link/e/x", "link/up", "link/x"}},
                    {"**/e/**/x", {"d/e/x"}},
                    {"**/nothing/**/x", {}}},
                   tree, policy, "t");
}

TEST(SessionPolicy, NothingIsShownBelowTheLastLevel) {
  Tree tree;
  tree.addFile("a/b/c/d").addFile("a/x").addLink("link", "a/b").addFile("x");
  SessionPolicy policy;
  policy.maxDepth = 2;
  expectEverywhere({{"**", {"a", "a/b", "a/x", "link", "link/c", "x"}},
                    {"a/**", {"a", "a/b", "a/b/c", "a/x"}},
                    {"a/b/**", {"a/b", "a/b/c", "a/b/c/d"}},
                    {"*/b/c", {}},
                    {"**/c/", {"link/c/"}},
                    {"*/b/", {"a/b/"}},
                    {"a/b/c/d", {"a/b/c/d"}}},
                   tree, policy);
}

Tree project() {
  Tree tree;
  for (int i = 0; i < 60; ++i) {
    std::string const folder = "p" + std::to_string(100 + i);
    tree.addFile(folder + "/a/x.js").addFile(folder + "/node_modules/m/x.js").addFile(folder + "/x.js~");
  }
  return tree.addFile("node_modules/m/x.js").addFile("node_modules/x.js").addLink("p100/link", "node_modules");
}

TEST(SessionPolicy, ExcludedNamesDoNotExist) {
  Strings files;
  for (int i = 0; i < 60; ++i) files.push_back("p" + std::to_string(100 + i) + "/a/x.js");
  std::string const fixed = "p100/node_modules";
  Expected const expected = {{"**/*.js*", files},
                             {"**/m/x.js", {}},
                             {"*/node_modules/m/x.js", {}},
                             {"p100/*", {"p100/a", "p100/link"}},
                             {"p100/n*", {}},
                             // What is written out before the first wildcard isn't excluded.
                             {"node_modules/*.js", {"node_modules/x.js"}},
                             {fixed + "/m/x.js", {fixed + "/m/x.js"}},
                             {fixed + "/**", {fixed, fixed + "/m", fixed + "/m/x.js"}},
                             {fixed, {fixed}},
                             {"*/node_modules/m/x.js", {}},
                             {"p10*/node_modules/", {}}};
  SessionPolicy policy;
  policy.excludedNames = {u"node_modules", u"*~"};
  policy.followLinks = false;
  expectEverywhere(expected, project(), policy);

  auto const disk = std::make_shared<MemoryProvider>(project());
  ServedScheme const mem(u"mem", disk);
  ReadSession const session(ReadSession::defaultMemoryBound, policy);
  EXPECT_EQ(search("**/x.js", "mem:///"), files);
  EXPECT_EQ(disk->requestsIn("node_modules"), 0U) << "nor is it read ahead";
}

TEST(SessionPolicy, ExcludedFoldersOfAStoreAreSkipped) {
  Tree tree;
  for (int i = 0; i < 4000; ++i) {
    tree.addFile("a/node_modules/" + std::to_string(i % 7) + "/" + std::to_string(i));
    if (i < 20) tree.addFile("b/" + std::to_string(10 + i % 3) + "/node_modules/" + std::to_string(i));
  }
  tree.addFile("a/node_modules.txt").addFile("b/z/x").addFile("node_modules/x");
  MemoryProvider::Options options;
  options.subtreePage = 10;
  auto const store = std::make_shared<MemoryProvider>(tree, options);
  ServedScheme const mem(u"mem", store);
  SessionPolicy policy;
  policy.excludedNames = {u"node_modules"};
  expectSearches({{"**", {"a", "a/node_modules.txt", "b", "b/10", "b/11", "b/12", "b/z", "b/z/x"}},
                  {"*/1*/*", {}},
                  {"*/node_modules/1*/*", {}},
                  {"node_modules/*", {"node_modules/x"}}},
                 "mem:///", policy);
  store->forgetRequests();
  ReadSession const session(ReadSession::defaultMemoryBound, policy);
  EXPECT_EQ(search("**", "mem:///").size(), 8U);
  EXPECT_LE(store->requests(), 6U);
}

TEST(SessionPolicy, OtherFileSystemsAreNotEntered) {
  Tree tree;
  tree.addFile("a/x").addFile("mnt/x").addFile("mnt/d/x").addLink("a/link", "mnt/d").addFile("z/x");
  MemoryProvider::Options options;
  options.mountPoint = "mnt";
  auto const disk = std::make_shared<MemoryProvider>(tree, options);
  ServedScheme const mem(u"mem", disk);
  SessionPolicy policy;
  policy.oneFileSystem = true;
  expectSearches({{"**", {"a", "a/link", "a/x", "mnt", "z", "z/x"}},
                  {"**/x", {"a/x", "z/x"}},
                  {"*/", {"a/", "mnt/", "z/"}},
                  {"*/x", {"a/x", "z/x"}},
                  {"*/d/x", {}},
                  {"*/*", {"a/link", "a/x", "z/x"}},
                  {"mnt/*", {"mnt/d", "mnt/x"}},
                  {"mnt/**/x", {"mnt/x", "mnt/d/x"}},
                  {"*/x", {"a/x", "z/x"}}},
                 "mem:///", policy);
  disk->forgetRequests();
  ReadSession const session(ReadSession::defaultMemoryBound, policy);
  search("**", "mem:///");
  EXPECT_EQ(disk->requestsIn("mnt"), 1U) << "only the question for its device";
}

}  // namespace
}  // namespace korvan::test
