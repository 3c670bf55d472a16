#include <memory>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/storage/vfs/exception.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "interrupt/interrupt_exception.hpp"
#include "interrupt/interrupt_state.hpp"
#include "support/memory_provider.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace {

using foundation::storage::vfs::ErrorCode;
using foundation::storage::vfs::Exception;
using foundation::storage::vfs::ReadSession;
using korvan::test::MemoryProvider;
using korvan::test::search;
using korvan::test::ServedScheme;
using korvan::test::Strings;
using korvan::test::TemporaryFolder;
using korvan::test::Tree;
using Operation = MemoryProvider::Operation;

Tree sample() {
  return Tree()
      .addFile("x.txt")
      .addFile("d1/y.txt")
      .addFile("d1/e/z.txt")
      .addFile(".hid/h.txt")
      .addFolder("d2/empty")
      .addFile("d2/.dot")
      .addFile("q?.txt");
}

struct Search {
  std::string pattern;
  Strings matches;
  bool dots = false;
};

// The pattern language by example, on `sample`.
std::vector<Search> const examples = {
    {"**/*.txt", {"q?.txt", "x.txt", "d1/y.txt", "d1/e/z.txt"}},
    {"", {}},
    {"", {}, true},
    {"x.txt", {"x.txt"}},
    {"x.txt/", {}},
    {"./x.txt", {"./x.txt"}},
    {"d1//e", {"d1//e"}},
    {"d1/e/", {"d1/e/"}},
    {"d1", {"d1"}},
    {"nothing", {}},
    {"nothing/*", {}},
    {"nothing/**", {}},
    {"x.txt/*", {}},
    {"x.txt/**", {}},
    {"q?.txt", {"q?.txt"}},
    {"?.txt", {}},
    {"*", {"d1", "d2", "q?.txt", "x.txt"}},
    {"*", {".hid", "d1", "d2", "q?.txt", "x.txt"}, true},
    {"*/", {"d1/", "d2/"}},
    {".*", {".hid"}},
    {"*?.txt", {"q?.txt"}},
    {"d*/e", {"d1/e"}},
    {"d*/*", {"d1/e", "d1/y.txt", "d2/empty"}},
    {"d2/*", {"d2/.dot", "d2/empty"}, true},
    {"d2/.*", {"d2/.dot"}},
    {".hid/*", {".hid/h.txt"}},
    {"*/h.txt", {}},
    {"*/h.txt", {".hid/h.txt"}, true},
    {"**", {"d1", "d1/e", "d1/e/z.txt", "d1/y.txt", "d2", "d2/empty", "q?.txt", "x.txt"}},
    {"**",
     {".hid", ".hid/h.txt", "d1", "d1/e", "d1/e/z.txt", "d1/y.txt", "d2", "d2/.dot", "d2/empty", "q?.txt", "x.txt"},
     true},
    {"**/", {"d1/", "d1/e/", "d2/", "d2/empty/"}},
    {"d1/**", {"d1", "d1/e", "d1/e/z.txt", "d1/y.txt"}},
    {"d1/**/", {"d1/", "d1/e/"}},
    {"d1/**/**/*.txt", {"d1/y.txt", "d1/e/z.txt"}},
    {"**/x.txt", {"x.txt"}},
    {"**/e", {"d1/e"}},
    {"**/e/..", {"d1/e/.."}},
    {"***", {"d1", "d2", "q?.txt", "x.txt"}},
    {"d1**", {"d1"}},
    {"*/**/*", {"d1/e", "d1/y.txt", "d1/e/z.txt", "d2/empty"}},
    {"**/d1/**", {"d1", "d1/e", "d1/e/z.txt", "d1/y.txt"}},
    // Each way to a match counts.
    {"**/e/**/*.txt", {"d1/e/z.txt"}},
    {"**/*/**", {"d1", "d1/e", "d1/e/z.txt", "d1/y.txt", "d2", "d2/empty", "d1/e", "d1/e/z.txt", "d2/empty"}},
};

TEST(Walk, GivesTheSameListWhereverTheTreeLies) {
  TemporaryFolder const folder;
  sample().writeTo(folder);
  ServedScheme const mem(u"mem", std::make_shared<MemoryProvider>(sample()));
  korvan::test::CurrentFolder const current(folder.path());
  for (std::string const& root : {folder.path(), "file://" + folder.path(), std::string("mem:///"), std::string("")}) {
    for (bool const inSession : {false, true}) {
      for (auto const& example : examples) {
        std::optional<ReadSession> session;
        if (inSession) session.emplace();
        EXPECT_EQ(search(example.pattern, root, example.dots), example.matches)
            << example.pattern << " in " << root << (inSession ? " in a session" : "");
      }
    }
  }
}

TEST(Walk, AnAbsolutePatternIgnoresTheRoot) {
  TemporaryFolder const folder;
  sample().writeTo(folder);
  ServedScheme const mem(u"mem", std::make_shared<MemoryProvider>(sample()));
  auto const below = [](std::string const& top, Strings names) {
    for (auto& name : names) name.insert(0, top);
    return names;
  };
  for (std::string const root : {"", "/nowhere", "mem:///nowhere"}) {
    EXPECT_EQ(search("mem:///**/*.txt", root), below("mem:///", {"q%3F.txt", "x.txt", "d1/y.txt", "d1/e/z.txt"}));
    EXPECT_EQ(search("mem:///d1/**/", root), below("mem:///", {"d1/", "d1/e/"}));
    EXPECT_EQ(search("MEM:///q%3f.txt", root), Strings{"mem:///q%3F.txt"});
    EXPECT_EQ(search("mem:///*", root), below("mem:///", {"d1", "d2", "q%3F.txt", "x.txt"}));
    EXPECT_EQ(search("file://" + folder.path() + "/d1/*", root),
              below("file://" + folder.path(), {"/d1/e", "/d1/y.txt"}));
  }
  for (std::string const root : {"", "/nowhere"}) {
    EXPECT_EQ(search(folder.path() + "/d*/*", root), below(folder.path(), {"/d1/e", "/d1/y.txt", "/d2/empty"}));
    EXPECT_EQ(search(folder.path() + "/d1/", root), Strings{folder.path() + "/d1/"});
    EXPECT_EQ(search("/", root), Strings{"/"});
  }
  // A local absolute pattern lies in the scheme of the root.
  EXPECT_EQ(search("/d1/*.txt", "mem:///d2"), Strings{"/d1/y.txt"});
}

class MemoryWalk : public testing::Test {
 protected:
  explicit MemoryWalk(MemoryProvider::Options options = {}, Tree tree = sample())
      : store_(std::make_shared<MemoryProvider>(std::move(tree), options)), mem_(u"mem", store_) {}
  ~MemoryWalk() override { utSetInterruptPending(false); }

  std::shared_ptr<MemoryProvider> store_;
  ServedScheme mem_;
};

TEST_F(MemoryWalk, AFolderThatCantBeReadGivesNothingAndItsSiblingsAll) {
  store_->fail(Operation::list, "d1", ErrorCode::permissionDenied);
  store_->fail(Operation::kind, "d2/empty", ErrorCode::other);
  for (bool const inSession : {false, true}) {
    std::optional<ReadSession> session;
    if (inSession) session.emplace();
    EXPECT_EQ(search("**", "mem:///"), (Strings{"d1", "d2", "d2/empty", "q?.txt", "x.txt"}));
    EXPECT_EQ(search("*/*", "mem:///"), Strings{"d2/empty"});
    EXPECT_EQ(search("d1/*", "mem:///"), Strings{});
    if (!session) continue;
    ASSERT_EQ(session->failedListings().size(), 1U);
    EXPECT_EQ(korvan::test::toBytes(session->failedListings()[0].getLocation().toString()), "mem:///d1");
    EXPECT_EQ(session->failedListings()[0].getErrorCode(), 2);
  }
}

TEST_F(MemoryWalk, AListingThatBreaksOffGivesNothing) {
  store_->failListingAfter("d1", 1);
  EXPECT_EQ(search("**", "mem:///"), (Strings{"d1", "d2", "d2/empty", "q?.txt", "x.txt"}));
  EXPECT_EQ(search("d1/*", "mem:///"), Strings{});
  EXPECT_EQ(search("d1/e/*", "mem:///"), Strings{"d1/e/z.txt"});
}

TEST_F(MemoryWalk, AnEntryThatVanishesIsListedButNotEntered) {
  store_->fail(Operation::kind, "d1/e", ErrorCode::nothingThere);
  store_->fail(Operation::list, "d1/e", ErrorCode::nothingThere);
  for (bool const inSession : {false, true}) {
    std::optional<ReadSession> session;
    if (inSession) session.emplace();
    EXPECT_EQ(search("d1/**", "mem:///"), (Strings{"d1", "d1/e", "d1/y.txt"}));
    if (session) {
      EXPECT_TRUE(session->failedListings().empty());
    }
  }
}

TEST_F(MemoryWalk, ALiteralThatCantBeLookedAtIsAnError) {
  store_->fail(Operation::kind, "d1/y.txt", ErrorCode::permissionDenied);
  for (std::string const pattern : {"d1/y.txt", "*/y.txt", "mem:///d1/y.txt"}) {
    try {
      ADD_FAILURE() << pattern << ": " << testing::PrintToString(search(pattern, "mem:///"));
    } catch (Exception const& e) {
      EXPECT_EQ(e.getErrorCode(), 2) << pattern;
    }
  }
  store_->fail(Operation::kind, "d2", ErrorCode::other);
  EXPECT_THROW(search("d2/**", "mem:///"), Exception);
  store_->fail(Operation::kind, "x.txt", ErrorCode::nothingThere);
  EXPECT_EQ(search("x.txt", "mem:///"), Strings{});
}

TEST_F(MemoryWalk, BadTextsAreErrors) {
  using foundation::storage::vfs::InvalidIRIException;
  using foundation::storage::vfs::UnsupportedIRISchemeException;
  EXPECT_THROW(search("mem:///a?b", ""), InvalidIRIException);
  EXPECT_THROW(search("*", "mem:///100%"), InvalidIRIException);
  EXPECT_THROW(search("gopher:///*", ""), UnsupportedIRISchemeException);
  EXPECT_THROW(search("*", "gopher:///"), UnsupportedIRISchemeException);
}

TEST_F(MemoryWalk, AnInterruptEndsTheSearch) {
  using Quindarel::System::InterruptException;
  utSetInterruptPending(true);
  for (std::string const pattern : {"*", "**", "*/x", "nothing/*", "mem:///**"}) {
    EXPECT_THROW(search(pattern, "mem:///"), InterruptException) << pattern;
  }
  EXPECT_EQ(search("x.txt", "mem:///"), Strings{"x.txt"}) << "a literal pattern doesn't poll";
  EXPECT_EQ(search("", "mem:///"), Strings{});

  // After so many entries, wherever in the walk that is.
  for (bool const inSession : {false, true}) {
    for (std::size_t entries = 0; entries < 7; ++entries) {
      std::optional<ReadSession> session;
      if (inSession) session.emplace();
      utSetInterruptPending(false);
      store_->interruptAfter(entries);
      EXPECT_THROW(search("**", "mem:///"), InterruptException) << entries;
      EXPECT_TRUE(utIsInterruptPending()) << "who reports it clears it";
    }
  }
}

TEST_F(MemoryWalk, DroppedDotEntriesAreNotPolledFor) {
  store_->tree().addFile("dots/.a").addFile("dots/.b");
  store_->interruptAfter(0);
  EXPECT_EQ(search("*", "mem:///dots"), Strings{});
  EXPECT_TRUE(utIsInterruptPending());
}

TEST_F(MemoryWalk, AnInterruptIsNoFailedListing) {
  ReadSession const session;
  store_->interruptAfter(3);
  EXPECT_THROW(search("**", "mem:///"), Quindarel::System::InterruptException);
  EXPECT_TRUE(session.failedListings().empty());
}

TEST_F(MemoryWalk, AsksNoMoreThanItMust) {
  struct {
    std::string pattern;
    std::size_t kinds;
    std::size_t lists;
    std::size_t kindsInSession;
    std::size_t listsInSession;
  } const cases[] = {
      {"d1/e/z.txt", 1, 0, 1, 0}, {"d1/", 1, 0, 1, 0},       {"*", 0, 1, 0, 1},
      {"d1/*", 0, 1, 0, 1},       {"*/*", 0, 3, 0, 3},       {"*/y.txt", 2, 1, 2, 1},  // d1 and d2 aren't read
      {"**", 9, 5, 1, 5},         // the root, and each of eight entries; the root and its four folders
      {"**/*.txt", 5, 10, 1, 5},  // folders only, and each again for the last segment
      {"**/y.txt", 10, 5, 1, 5},  {"**/*/**", 18, 27, 1, 5},
  };
  for (auto const& c : cases) {
    store_->forgetRequests();
    auto const without = search(c.pattern, "mem:///");
    EXPECT_LE(store_->requests(Operation::kind), c.kinds) << c.pattern;
    EXPECT_LE(store_->requests(Operation::list), c.lists) << c.pattern;
    store_->forgetRequests();
    ReadSession const session;
    EXPECT_EQ(search(c.pattern, "mem:///"), without);
    EXPECT_EQ(store_->requests(Operation::kind), c.kindsInSession) << c.pattern;
    EXPECT_EQ(store_->requests(Operation::list), c.listsInSession) << c.pattern;
    EXPECT_EQ(store_->requests(Operation::identity), 0U) << c.pattern;
    EXPECT_LE(store_->mostRequests(Operation::list), 1U) << c.pattern;
    auto const before = store_->requests();
    EXPECT_EQ(search(c.pattern, "mem:///"), without);
    EXPECT_EQ(store_->requests(), before) << c.pattern << ": the session knows it all";
  }
}

TEST_F(MemoryWalk, ASessionCountsWhatItRead) {
  ReadSession const session;
  search("**/*", "mem:///");
  EXPECT_EQ(session.activity().folders, 5U);
  EXPECT_EQ(session.activity().entries, 10U);
}

TEST_F(MemoryWalk, AFailedFolderIsAskedOnceInASession) {
  store_->fail(Operation::list, "d1", ErrorCode::other);
  ReadSession const session;
  search("**/*", "mem:///");
  search("d1/*", "mem:///");
  EXPECT_EQ(store_->requests(Operation::list, "d1"), 1U);
  EXPECT_EQ(session.failedListings().size(), 1U);
}

TEST_F(MemoryWalk, EachCallSeesTheChangesBeforeIt) {
  for (bool const inSession : {false, true}) {
    auto const call = [&](std::string const& pattern) {
      std::optional<ReadSession> session;
      if (inSession) session.emplace();
      return search(pattern, "mem:///");
    };
    EXPECT_EQ(call("d*/**"), (Strings{"d1", "d1/e", "d1/e/z.txt", "d1/y.txt", "d2", "d2/empty"}));
    store_->tree().addFile("d1/new");
    store_->tree().remove("d1/e");
    EXPECT_EQ(call("d*/**"), (Strings{"d1", "d1/new", "d1/y.txt", "d2", "d2/empty"}));
    EXPECT_EQ(call("d1/e/z.txt"), Strings{});
    EXPECT_EQ(call("d1/new"), Strings{"d1/new"});
    store_->tree().remove("d1/new");
    store_->tree().addFile("d1/e/z.txt");
  }
}

TEST_F(MemoryWalk, OneCallSeesOneStateOfAFolder) {
  ReadSession const outer;
  EXPECT_EQ(search("d1/*", "mem:///"), (Strings{"d1/e", "d1/y.txt"}));
  store_->tree().remove("d1/y.txt");
  EXPECT_EQ(search("d1/*", "mem:///"), (Strings{"d1/e", "d1/y.txt"}));
  EXPECT_EQ(search("d1/y.txt", "mem:///"), Strings{"d1/y.txt"});
  {
    ReadSession const inner;
    EXPECT_EQ(search("d1/*", "mem:///"), Strings{"d1/e"});
  }
  EXPECT_EQ(search("d1/*", "mem:///"), (Strings{"d1/e", "d1/y.txt"}));
}

// A large flat store: few pages must do the work of many listings, and nothing may be missed at their edges.
class FlatStore : public MemoryWalk {
 protected:
  static constexpr std::size_t folders = 50;
  static constexpr std::size_t files = 40;
  static Tree wide() {
    Tree tree;
    for (std::size_t f = 0; f < folders; ++f) {
      for (std::size_t i = 0; i < files; ++i) {
        tree.addFile("f" + std::to_string(f) + "/x" + std::to_string(i) + (i % 2 == 0 ? ".csv" : ".txt"));
      }
    }
    return tree;
  }
  static MemoryProvider::Options paged() {
    MemoryProvider::Options options;
    options.subtreePage = 1000;
    return options;
  }
  FlatStore() : MemoryWalk(paged(), wide()) {}
};

TEST_F(FlatStore, IsReadPageByPage) {
  struct {
    std::string pattern;
    std::size_t matches;
    std::size_t requests;
  } const cases[] = {
      {"**", folders * (files + 1), 5},
      {"**/*.csv", folders * files / 2, 5},
      {"*/*.csv", folders * files / 2, 5},
      {"f7/*.csv", files / 2, 3},
      {"f7/x1.txt", 1, 2},
  };
  for (auto const& c : cases) {
    store_->forgetRequests();
    ReadSession const session;
    EXPECT_EQ(search(c.pattern, "mem:///").size(), c.matches) << c.pattern;
    EXPECT_LE(store_->requests(), c.requests) << c.pattern;
  }
}

TEST_F(FlatStore, AFailedPageIsAFailedListing) {
  store_->fail(Operation::subtree, "", ErrorCode::permissionDenied);
  store_->fail(Operation::list, "", ErrorCode::permissionDenied);
  ReadSession const session;
  EXPECT_EQ(search("**/*.csv", "mem:///"), Strings{});
  EXPECT_EQ(session.failedListings().size(), 1U);
}

}  // namespace
