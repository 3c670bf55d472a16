#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "foundation/storage/vfs/facts.hpp"
#include "support/hooked_provider.hpp"
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
                    {"**/*/**/x", {"d/x", "d/e/x", "link/x", "link/e/x", "d/e/x", "d/up/d/x", "d/up/d/e/x"}}},
                   tree, policy, "t");
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

  // Nor are they read ahead, by the threads that a slow disk is worth.
  auto const disk = std::make_shared<MemoryProvider>(project());
  auto const wait = [](auto const&...) { std::this_thread::sleep_for(std::chrono::milliseconds(1)); };
  ServedScheme const mem(u"mem", std::make_shared<HookedProvider>(disk, 8, wait));
  for (auto const& [pattern, matches] : Expected{{"**/x.js", files}, {"*/a/node_modules/*", {}}, {"*/a/*.js", files}}) {
    ReadSession const session(ReadSession::defaultMemoryBound, policy);
    EXPECT_EQ(search(pattern, "mem:///"), matches);
    EXPECT_EQ(disk->requestsIn("node_modules"), 0U) << pattern;
  }
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

TEST(SessionPolicy, DeepFoldersAreNotRead) {
  Tree tree;
  for (int i = 0; i < 200; ++i)
    tree.addFile("t/a/b/" + std::to_string(i) + "/x").addFile("t/c" + std::to_string(i / 2) + "/y");
  tree.addFile("t/b");
  SessionPolicy policy;
  policy.maximumDepth = 2;
  Expected const expected = {{"t/**/*b", {"t/b", "t/a/b"}},
                             {"t/*/*/1", {}},
                             {"t/*/b/1/x", {}},
                             {"t/*/b/", {"t/a/b/"}},
                             {"t/a/b/*99/**", {"t/a/b/199", "t/a/b/199/x", "t/a/b/99", "t/a/b/99/x"}},
                             {"t/**/x", {}}};
  expectEverywhere(expected, tree, policy);
  for (std::size_t const depth : {1U, 2U, 3U}) {
    MemoryProvider::Options options;
    options.subtreePage = 50;
    auto const store = std::make_shared<MemoryProvider>(tree, options);
    ServedScheme const mem(u"mem", store);
    policy.maximumDepth = depth;
    if (depth == 2) expectSearches(expected, "mem:///", policy);
    store->forgetRequests();
    ReadSession const session(ReadSession::defaultMemoryBound, policy);
    EXPECT_EQ(search("t/**", "mem:///").size(), depth == 1 ? 103U : depth == 2 ? 204U : 404U);
    EXPECT_LE(store->requests(), depth == 1 ? 3U : depth == 2 ? 7U : 11U);
  }
}

TEST(SessionPolicy, FactsAreThoseOfTheDisk) {
  TemporaryFolder const folder;
  folder.addFolder("d");
  folder.addLink("link", "nowhere");
  std::ofstream(folder.path() + "/d/file") << "12345";
  timespec const times[] = {{0, 0}, {-1, 999999999}};
  ASSERT_EQ(::utimensat(AT_FDCWD, (folder.path() + "/d/file").c_str(), times, 0), 0);
  auto const facts = [&](std::string const& name) {
    return vfs::facts(vfs::AbsoluteIRI(u"file://" + folder.text() + toText("/" + name)),
                      Quindarel::KorvanStorageSystem::GetStorageSystemReference());
  };
  ReadSession const session(ReadSession::defaultMemoryBound, {.collectFacts = true});
  for (bool const isListed : {false, true}) {
    if (isListed) search("**", folder.path());
    EXPECT_EQ(facts("d/file"), (vfs::EntryFacts{.size = 5, .modified = vfs::Timestamp{-1, 999999999}}));
    EXPECT_EQ(facts("d/").value().kind, EntryKind::folder);
    EXPECT_EQ(facts("link").value().size, 7U);
    EXPECT_EQ(facts("nothing"), std::nullopt);
  }
}

TEST(SessionPolicy, FactsOfAStoreCostNoRequests) {
  Tree tree;
  for (int i = 0; i < 500; ++i)
    tree.addFile("d" + std::to_string(i % 7) + "/" + std::to_string(i % 5) + "/" + std::to_string(i));
  MemoryProvider::Options options;
  options.subtreePage = 50;
  auto const store = std::make_shared<MemoryProvider>(tree, options);
  ServedScheme const mem(u"mem", store);
  auto const storage = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
  std::size_t requests = 0;
  for (bool const collects : {false, true}) {
    store->forgetRequests();
    ReadSession const session(ReadSession::defaultMemoryBound, {.collectFacts = collects});
    Strings matches = search("**", "mem:///");
    matches.emplace_back();
    if (!collects) requests = store->requests();
    for (std::string const& match : matches) {
      vfs::AbsoluteIRI const location(toText("mem:///" + match));
      EntryKind const kind = tree.isFolder(match) ? EntryKind::folder : EntryKind::file;
      EXPECT_EQ(vfs::entryKind(location, storage), kind);
      vfs::EntryFacts expected{.kind = kind};
      if (kind == EntryKind::file) expected = {.size = match.size(), .etag = match};
      if (!collects) continue;
      EXPECT_EQ(vfs::facts(location, storage), expected);
    }
    EXPECT_EQ(store->requests(), requests);
  }
}

}  // namespace
}  // namespace korvan::test
