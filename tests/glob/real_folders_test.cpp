#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/storage/vfs/exception.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace {

using foundation::storage::vfs::Exception;
using foundation::storage::vfs::ReadSession;
using korvan::test::CurrentFolder;
using korvan::test::encodedForIRI;
using korvan::test::search;
using korvan::test::Strings;
using korvan::test::TemporaryFolder;

// Holds the search to the list with a session and without, from the path and from its IRI.
void expectMatches(TemporaryFolder const& folder, std::string const& pattern, Strings const& expected,
                   bool dots = false) {
  for (std::string const& root : {folder.path(), "file://" + encodedForIRI(folder.path())}) {
    EXPECT_EQ(search(pattern, root, dots), expected) << pattern << " in " << root;
    ReadSession const session;
    EXPECT_EQ(search(pattern, root, dots), expected) << pattern << " in " << root << " in a session";
    EXPECT_TRUE(session.failedListings().empty()) << pattern;
  }
}

TEST(RealFolders, EveryNameIsFoundListedAndAddressed) {
  Strings const names = {
      " ",
      "a b",
      "100%",
      "a%20b",
      "#1",
      "?",
      "x?y",
      "a\nb",
      "-rf",
      "--",
      "~",
      "$HOME",
      "http:",
      "a\\b",
      "\\",
      "C:",
      "[a]",
      "{a,b}",
      "!x",
      "'",
      "\"",
      "a\tb",
      "\x01\x7F",
      "\xE6\x97\xA5\xE6\x9C\xAC",
      "\xF0\x9F\x98\x80",
      "\xFF",
      "caf\xE9",
      "\xC3",
      "\xA9\xC3",
      "\xED\xA0\x80",
      "\xEF\xBB\xBF",
      "a*b",
      "**",
      ";&|",
      "e\xCC\x81",
      "\xC3\xA9",
      "A",
      "a",
      "...",
      "..x",
      std::string(255, 'n'),
      std::string(127, 'x') + "\xFF",
  };
  for (auto const& name : names) {
    for (bool const isFolder : {false, true}) {
      TemporaryFolder const folder;
      isFolder ? folder.addFile(name + "/in") : folder.addFile(name);
      Strings const all = isFolder ? Strings{name, name + "/in"} : Strings{name};
      expectMatches(folder, "*", {name}, true);
      expectMatches(folder, "**", all, true);
      expectMatches(folder, "*/", isFolder ? Strings{name + "/"} : Strings{}, true);
      expectMatches(folder, "*/in", isFolder ? Strings{name + "/in"} : Strings{}, true);
      std::string const iri = "file://" + folder.path() + "/" + encodedForIRI(name);
      EXPECT_EQ(search("file://" + folder.path() + "/*", "", true), Strings{iri});
      if (name.find('*') != std::string::npos) continue;
      expectMatches(folder, name, {name});
      expectMatches(folder, "./" + name, {"./" + name});
      EXPECT_EQ(search(iri, ""), Strings{iri});
      EXPECT_EQ(search(folder.path() + "/" + name, ""), Strings{folder.path() + "/" + name});
      if (isFolder) {
        expectMatches(folder, name + "/*", {name + "/in"});
        EXPECT_EQ(search("*", iri), Strings{"in"});
      }
    }
  }
}

TEST(RealFolders, ATextThatNamesNothingIsNotCutShort) {
  TemporaryFolder const folder;
  folder.addFile("a");
  folder.addFile("d/a");
  using korvan::io::internal::glob;
  for (std::u16string const& pattern :
       {std::u16string(u"a\0", 2), std::u16string(u"a\0b", 3), std::u16string(u"d\0/*", 4), std::u16string(u"d/*\0", 4),
        std::u16string(u"*\0", 2)}) {
    for (bool const inSession : {false, true}) {
      std::optional<ReadSession> session;
      if (inSession) session.emplace();
      EXPECT_TRUE(glob(pattern, folder.text(), false).empty()) << testing::PrintToString(pattern);
      EXPECT_TRUE(glob(pattern, u"file://" + folder.text(), false).empty()) << testing::PrintToString(pattern);
    }
  }
  EXPECT_TRUE(glob(u"*", folder.text() + std::u16string(u"/d\0", 3), false).empty());
}

TEST(RealFolders, LinksAreFollowed) {
  TemporaryFolder const folder;
  folder.addFile("real/in.txt");
  folder.addLink("to-folder", "real");
  folder.addLink("to-file", "real/in.txt");
  folder.addLink("to-link", "to-folder");
  folder.addLink("broken", "nowhere");
  folder.addLink("broken-folder", "nowhere/");
  folder.addLink("self", "self");
  expectMatches(folder, "*", {"broken", "broken-folder", "real", "self", "to-file", "to-folder", "to-link"});
  expectMatches(folder, "*/", {"real/", "to-folder/", "to-link/"});
  expectMatches(folder, "*/in.txt", {"real/in.txt", "to-folder/in.txt", "to-link/in.txt"});
  expectMatches(folder, "**",
                {"broken", "broken-folder", "real", "real/in.txt", "self", "to-file", "to-folder", "to-folder/in.txt",
                 "to-link", "to-link/in.txt"});
  for (std::string const name : {"broken", "self", "to-file", "to-folder"}) expectMatches(folder, name, {name});
  for (std::string const pattern : {"broken/", "self/", "to-file/", "self/x", "self/*", "broken/*"}) {
    expectMatches(folder, pattern, {});
  }
  expectMatches(folder, "to-link/", {"to-link/"});
  // The links' own ".." leads out of what they lead to.
  expectMatches(folder, "to-link/../self", {"to-link/../self"});
}

TEST(RealFolders, LinkCyclesEnd) {
  TemporaryFolder const folder;
  folder.addFile("a/x.txt");
  folder.addLink("a/up", "..");
  folder.addLink("a/here", ".");
  expectMatches(folder, "**", {"a", "a/here", "a/up", "a/x.txt"});
  expectMatches(folder, "**/*.txt", {"a/x.txt", "a/here/x.txt"});
  expectMatches(folder, "**/x.txt", {"a/x.txt", "a/here/x.txt"});
  // From inside, the folder above isn't one that was passed.
  expectMatches(folder, "a/**", {"a", "a/here", "a/up", "a/up/a", "a/x.txt"});
  expectMatches(folder, "a/**/*.txt", {"a/x.txt", "a/here/x.txt", "a/up/a/x.txt"});

  TemporaryFolder const two;
  two.addFile("a/x");
  two.addFile("b/y");
  two.addLink("a/b", "../b");
  two.addLink("b/a", "../a");
  expectMatches(two, "**", {"a", "a/b", "a/b/a", "a/b/y", "a/x", "b", "b/a", "b/a/b", "b/a/x", "b/y"});
  expectMatches(two, "**/y", {"a/b/y", "b/y", "b/a/b/y"});

  // Four folders, each linked to the others: every path without a repeated folder, and one step more on each.
  TemporaryFolder const knot;
  for (char const from : std::string("abcd")) {
    for (char const to : std::string("abcd")) {
      if (from != to) knot.addLink(std::string{from, '/', to}, std::string("../") + to);
    }
  }
  constexpr std::size_t entered[] = {4, 4 * 3, 4 * 3 * 2, 4 * 3 * 2};
  EXPECT_EQ(search("**", knot.path()).size(), 4 + 3 * (entered[0] + entered[1] + entered[2] + entered[3]));
}

TEST(RealFolders, TheEmptyRootAndARelativeOneAreTheCurrentFolders) {
  TemporaryFolder const folder;
  folder.addFile("a.txt");
  folder.addFile("d/b.txt");
  folder.addFile("d/e/c.txt");
  CurrentFolder const current(folder.path());
  EXPECT_EQ(search("*.txt", ""), Strings{"a.txt"});
  EXPECT_EQ(search("d/*.txt", ""), Strings{"d/b.txt"});
  EXPECT_EQ(search("**/*.txt", ""), (Strings{"a.txt", "d/b.txt", "d/e/c.txt"}));
  EXPECT_EQ(search("a.txt", ""), Strings{"a.txt"});
  for (std::string const root : {"d", "d/", "./d", "d/e/.."}) {
    EXPECT_EQ(search("*.txt", root), Strings{"b.txt"}) << root;
    EXPECT_EQ(search("**/*.txt", root), (Strings{"b.txt", "e/c.txt"})) << root;
    EXPECT_EQ(search("e/c.txt", root), Strings{"e/c.txt"}) << root;
    EXPECT_EQ(search("../*.txt", root), Strings{"../a.txt"}) << root;
  }
  EXPECT_EQ(search("*", "nowhere"), Strings{});
  EXPECT_EQ(search("**", "a.txt"), Strings{});
}

TEST(RealFolders, ACallSeesWhatChangedBeforeIt) {
  TemporaryFolder const folder;
  folder.addFile("d/a");
  for (bool const inSession : {false, true}) {
    auto const call = [&](std::string const& pattern) {
      std::optional<ReadSession> session;
      if (inSession) session.emplace();
      return search(pattern, folder.path());
    };
    EXPECT_EQ(call("**/*"), (Strings{"d", "d/a"}));
    folder.addFile("d/b");
    EXPECT_EQ(call("**/*"), (Strings{"d", "d/a", "d/b"}));
    EXPECT_EQ(call("d/b"), Strings{"d/b"});
    ASSERT_EQ(::unlink((folder.path() + "/d/b").c_str()), 0);
    EXPECT_EQ(call("d/b"), Strings{});
    EXPECT_EQ(call("**/*"), (Strings{"d", "d/a"}));
  }
}

// Runs the checks as a user whom rights bind, in a process of their own; false when one failed.
bool passesUnprivileged(std::function<void()> const& checks) {
  std::fflush(nullptr);
  pid_t const child = ::fork();
  if (child == 0) {
    constexpr unsigned nobody = 65534;
    if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0)) ::_exit(3);
    checks();
    std::fflush(nullptr);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(RealFolders, AFolderWithoutPermissionGivesNothingAndItsSiblingsAll) {
  TemporaryFolder const folder;
  folder.addFile("a/x");
  folder.addFile("locked/x");
  folder.addFile("namesonly/x");
  folder.addFolder("namesonly/d");
  folder.addFile("throughonly/x");
  folder.addLink("to-locked", "locked");
  folder.addLink("into-locked", "locked/x");
  folder.addFile("z/x");
  auto const allow = [&](char const* name, mode_t mode) {
    ASSERT_EQ(::chmod((folder.path() + "/" + name).c_str(), mode), 0);
  };
  allow("locked", 0);
  allow("namesonly", 0444);
  allow("throughonly", 0111);
  Strings const top = {"a", "into-locked", "locked", "namesonly", "throughonly", "to-locked", "z"};

  EXPECT_TRUE(passesUnprivileged([&] {
    for (bool const inSession : {false, true}) {
      std::optional<ReadSession> session;
      if (inSession) session.emplace();
      auto const call = [&](std::string const& pattern) { return search(pattern, folder.path()); };
      EXPECT_EQ(call("*"), top);
      EXPECT_EQ(call("*/"), (Strings{"a/", "locked/", "namesonly/", "throughonly/", "to-locked/", "z/"}));
      EXPECT_EQ(call("*/*"), (Strings{"a/x", "namesonly/d", "namesonly/x", "z/x"}));
      EXPECT_EQ(call("**"), (Strings{"a", "a/x", "into-locked", "locked", "namesonly", "namesonly/d", "namesonly/x",
                                     "throughonly", "to-locked", "z", "z/x"}));
      EXPECT_EQ(call("**/*x"), (Strings{"a/x", "namesonly/x", "z/x"}));
      EXPECT_EQ(call("throughonly/x"), Strings{"throughonly/x"});
      EXPECT_EQ(call("locked"), Strings{"locked"});
      EXPECT_EQ(call("locked/*"), Strings{});
      EXPECT_EQ(call("locked/**"), Strings{"locked"});
      // What is named literally and can't be looked at is an error: nobody can say that it isn't there.
      EXPECT_EQ(call("locked/x/*/y"), Strings{});
      for (std::string const pattern : {"locked/x", "*/x", "**/x"}) {
        try {
          ADD_FAILURE() << pattern << ": " << testing::PrintToString(call(pattern));
        } catch (Exception const& e) {
          EXPECT_EQ(e.getErrorCode(), 2) << e.what();
        }
      }
      if (session) {
        EXPECT_FALSE(session->failedListings().empty());
      }
    }
  }));
}

}  // namespace
