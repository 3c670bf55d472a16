#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/storage_exception.hpp"
#include "support/child_process.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

namespace vfs = foundation::storage::vfs;

TEST(RealFolders, EveryNameIsFoundListedAndAddressed) {
  Tree tree;
  TemporaryFolder const folder;
  std::string const iri = "file://" + folder.path() + "/";
  for (std::string const& name : Strings{"a b",
                                         "100%",
                                         "a%20b",
                                         "#1",
                                         "x?y",
                                         "a\nb",
                                         "http:",
                                         "a\\b",
                                         "\x01\x7F",
                                         "\xE6\x97\xA5",
                                         "\xF0\x9F\x98\x80",
                                         "\xFF",
                                         "caf\xE9",
                                         "\xED\xA0\x80",
                                         "e\xCC\x81",
                                         "A",
                                         "a",
                                         "...",
                                         "[a]",
                                         "~",
                                         std::string(254, 'n') + "\xFF"}) {
    tree.addFile(name + "/in");
    folder.addFile(name + "/in");
    expectSearch({name}, name, folder.path());
    expectSearch({name + "/in"}, name + "/*", folder.path());
    expectSearch({"in"}, "*", iri + encodedForIRI(name));
    expectSearch({iri + encodedForIRI(name) + "/in"}, iri + encodedForIRI(name) + "/*", "");
  }
  for (std::string const pattern : {"*", "**", "*/", "*/in"}) {
    expectSearch(expectedMatches(tree, "", pattern, true), pattern, folder.path(), true);
  }
}

TEST(RealFolders, ATextWithNulIsNotTruncated) {
  TemporaryFolder const folder;
  folder.addFile("d/a");
  for (auto const* const name : {"d/a\0", "d\0/*", "d/*\0"}) expectSearch({}, std::string(name, 4), folder.path());
  expectSearch({}, "*", folder.path() + std::string("/d\0", 3));
}

// Written by hand, as the slow matcher may be wrong too.
TEST(RealFolders, LinkCyclesEnd) {
  TemporaryFolder const folder;
  folder.addFile("a/x.txt");
  folder.addLink("a/up", "..");
  folder.addLink("a/here", ".");
  expectSearch({"a", "a/here", "a/up", "a/x.txt"}, "**", folder.path());
  expectSearch({"a/x.txt", "a/here/x.txt"}, "**/*.txt", folder.path());
  // The descent starts below the parent, so the parent isn't an ancestor.
  expectSearch({"a", "a/here", "a/up", "a/up/a", "a/x.txt"}, "a/**", folder.path());
}

TEST(RealFolders, ARelativeRootIsResolvedAgainstTheCurrentFolder) {
  TemporaryFolder const folder;
  folder.addFile("a.txt");
  folder.addFile("d/b.txt");
  folder.addFile("d/e/c.txt");
  CurrentFolder const current(folder.path());
  for (std::string const root : {"d", "d/", "./d", "d/e/.."}) {
    expectSearch({"b.txt", "e/c.txt"}, "**/*.txt", root);
    expectSearch({"e/c.txt"}, "e/c.txt", root);
    expectSearch({"../a.txt"}, "../*.txt", root);
  }
  for (std::string const root : {"nowhere", "a.txt"}) expectSearch({}, "**", root);
}

TEST(RealFolders, ACallSeesEarlierChanges) {
  TemporaryFolder const folder;
  folder.addFile("d/a");
  expectSearch({"d", "d/a"}, "**/*", folder.path());
  folder.addFile("d/b");
  expectSearch({"d", "d/a", "d/b"}, "**/*", folder.path());
  expectSearch({"d/b"}, "d/b", folder.path());
  std::filesystem::remove(folder.path() + "/d/b");
  expectSearch({"d", "d/a"}, "**/*", folder.path());
}

TEST(RealFolders, AFolderWithoutPermissionIsSkipped) {
  TemporaryFolder const folder;
  for (auto const* const file : {"a/x", "locked/x", "names/x", "names/d/y", "through/x"}) folder.addFile(file);
  folder.addLink("into-locked", "locked/x");
  auto const setMode = [&](char const* name, unsigned mode) {
    std::filesystem::permissions(folder.path() + "/" + name, std::filesystem::perms{mode});
  };
  struct {
    std::string pattern;
    Strings matches;
  } const cases[] = {
      {"*", {"a", "into-locked", "locked", "names", "through"}},
      {"*/*", {"a/x", "names/d", "names/x"}},
      {"**", {"a", "a/x", "into-locked", "locked", "names", "names/d", "names/x", "through"}},
      {"through/x", {"through/x"}},
      {"locked/**", {"locked"}},
  };
  setMode("locked", 0);
  setMode("names", 0444);
  setMode("through", 0111);
  EXPECT_TRUE(passesUnprivileged([&] {
    for (bool const inSession : {false, true}) {
      std::optional<ReadSession> session;
      if (inSession) session.emplace();
      for (auto const& c : cases) EXPECT_EQ(search(c.pattern, folder.path()), c.matches) << c.pattern;
      // If a literal name can't be looked up, that is an error, since it may exist.
      for (std::string const pattern : {"locked/x", "*/x", "**/x"}) {
        EXPECT_THROW(search(pattern, folder.path()), vfs::Exception) << pattern;
      }
      EXPECT_TRUE(!session || !session->failedListings().empty());
    }
    // By policy it is one more folder that can't be read, unless the user wrote out the whole name.
    struct {
      std::string pattern;
      Strings matches, reported;
    } const reports[] = {{"**/x", {"a/x", "names/x", "through/x"}, {"into-locked", "locked", "names/d", "through"}},
                         {"*/x", {"a/x", "through/x"}, {"into-locked", "locked", "names"}},
                         {"**/into-locked", {"into-locked"}, {"into-locked", "locked", "names/d", "through"}}};
    for (auto const& c : reports) {
      for (std::size_t const memory : {ReadSession::defaultMemoryBound, std::size_t{300}}) {
        ReadSession session(memory, {.reportRefusals = true});
        EXPECT_EQ(search(c.pattern, folder.path()), c.matches) << c.pattern;
        Strings reported;
        for (auto const& failure : session.failedListings()) {
          reported.push_back(
              toBytes(failure.getLocation().toString()).substr(("file://" + folder.path() + "/").size()));
        }
        std::sort(reported.begin(), reported.end());
        EXPECT_EQ(reported, c.reported) << c.pattern;
        session.beginSearch();
        EXPECT_THROW(search("locked/x", folder.path()), vfs::Exception);
      }
    }
  }));
  for (auto const* const name : {"locked", "names", "through"}) setMode(name, 0755);
}

}  // namespace
}  // namespace korvan::test
