#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/storage_exception.hpp"
#include "quindarel/interrupt/interrupt_exception.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"
#include "support/memory_provider.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

using Operation = MemoryProvider::Operation;
using Quindarel::System::InterruptException;

Tree sample() {
  Tree tree;
  tree.addFolder("d2/empty");
  for (auto const* const path : {"x.txt", "d1/y.txt", "d1/e/z.txt", ".hid/h.txt", "d2/.dot", "q?.txt"}) {
    tree.addFile(path);
  }
  return tree;
}

class Walk : public testing::Test {
 protected:
  ~Walk() override { utSetInterruptPending(false); }

  std::shared_ptr<MemoryProvider> store_ = std::make_shared<MemoryProvider>(sample());
  ServedScheme mem_{u"mem", store_};
};

// Written by hand, as the slow matcher may be wrong too.
TEST_F(Walk, ReturnsTheSameListOnEveryStorage) {
  struct {
    std::string pattern;
    Strings matches;
    bool dots = false;
  } const examples[] = {
      {"", {}, true},
      {"x.txt/", {}},
      {"./x.txt", {"./x.txt"}},
      {"d1//e", {"d1//e"}},
      {"*", {".hid", "d1", "d2", "q?.txt", "x.txt"}, true},
      {".*", {".hid"}},
      {"*/h.txt", {}},
      {"d*/*", {"d1/e", "d1/y.txt", "d2/empty"}},
      {"**/*.txt", {"q?.txt", "x.txt", "d1/y.txt", "d1/e/z.txt"}},
      {"**/", {"d1/", "d1/e/", "d2/", "d2/empty/"}},
      {"d1/**", {"d1", "d1/e", "d1/e/z.txt", "d1/y.txt"}},
      // A match is returned once for each way in which it is found.
      {"**/*/**", {"d1", "d1/e", "d1/e/z.txt", "d1/y.txt", "d2", "d2/empty", "d1/e", "d1/e/z.txt", "d2/empty"}},
  };
  TemporaryFolder const folder;
  sample().writeTo(folder);
  CurrentFolder const current(folder.path());
  for (std::string const& root : {folder.path(), "file://" + folder.path(), std::string("mem:///"), std::string()}) {
    for (auto const& [pattern, matches, dots] : examples) expectSearch(matches, pattern, root, dots);
  }
}

TEST_F(Walk, AnAbsolutePatternIgnoresTheRoot) {
  TemporaryFolder const folder;
  sample().writeTo(folder);
  for (std::string const root : {"", "/nowhere", "mem:///nowhere"}) {
    expectSearch({"mem:///q%3F.txt", "mem:///x.txt"}, "mem:///*.txt", root);
    expectSearch({"mem:///q%3F.txt"}, "MEM:///q%3f.txt", root);
    expectSearch({"file://" + folder.path() + "/d1/e/"}, "file://" + folder.path() + "/d1/*/", root);
  }
  expectSearch({folder.path() + "/d1/e", folder.path() + "/d1/y.txt"}, folder.path() + "/d1/*", "/nowhere");
  expectSearch({"/"}, "/", "");
  // An absolute local pattern is taken in the scheme of an IRI root.
  expectSearch({"/d1/y.txt"}, "/d1/*.txt", "mem:///d2");
}

TEST_F(Walk, AnUnreadableFolderIsSkippedAndRecorded) {
  store_->failures[{Operation::list, "d1"}] = vfs::ErrorCode::permissionDenied;
  // A folder that vanishes during the search isn't a failure.
  store_->failures[{Operation::kind, "d2/empty"}] = vfs::ErrorCode::notFound;
  store_->failures[{Operation::list, "d2/empty"}] = vfs::ErrorCode::notFound;
  for (bool const inSession : {false, true}) {
    std::optional<ReadSession> session;
    if (inSession) session.emplace();
    EXPECT_EQ(search("**", "mem:///"), (Strings{"d1", "d2", "d2/empty", "q?.txt", "x.txt"}));
    EXPECT_EQ(search("*/*", "mem:///"), Strings{"d2/empty"});
    store_->forgetRequests();
    EXPECT_EQ(search("d1/*", "mem:///"), Strings{});
    if (!session) continue;
    EXPECT_EQ(store_->requests(), 0U);
    ASSERT_EQ(session->failedListings().size(), 1U);
    EXPECT_EQ(toBytes(session->failedListings()[0].getLocation().toString()), "mem:///d1");
    EXPECT_EQ(session->failedListings()[0].getErrorCode(), 2);
  }
}

TEST_F(Walk, AnIncompleteListingHasNoMatches) {
  store_->onEntry = [left = 1]() mutable {
    if (left-- == 0) throw vfs::Exception(vfs::ErrorCode::other, vfs::AbsoluteIRI(u"mem:///d1"), "injected");
  };
  EXPECT_EQ(search("d1/*", "mem:///"), Strings{});
}

TEST_F(Walk, ALiteralThatCantBeLookedUpIsAnError) {
  store_->failures[{Operation::kind, "d1/y.txt"}] = vfs::ErrorCode::permissionDenied;
  store_->failures[{Operation::kind, "d2"}] = vfs::ErrorCode::other;
  store_->failures[{Operation::kind, "x.txt"}] = vfs::ErrorCode::notFound;
  for (std::string const pattern : {"d1/y.txt", "*/y.txt", "mem:///d1/y.txt", "d2/**"}) {
    EXPECT_THROW(search(pattern, "mem:///"), vfs::Exception) << pattern;
  }
  expectSearch({}, "x.txt", "mem:///");
}

TEST_F(Walk, AnInterruptEndsTheSearch) {
  utSetInterruptPending(true);
  for (std::string const pattern : {"*", "**", "*/x", "nothing/*", "mem:///**"}) {
    EXPECT_THROW(search(pattern, "mem:///"), InterruptException) << pattern;
  }
  EXPECT_EQ(search("x.txt", "mem:///"), Strings{"x.txt"}) << "a literal pattern doesn't poll";

  // After any number of entries, wherever in the walk that is.
  for (int entries = 0; entries < 7; ++entries) {
    ReadSession const session;
    utSetInterruptPending(false);
    store_->onEntry = [left = entries]() mutable { utSetInterruptPending(left-- <= 0); };
    EXPECT_THROW(search("**", "mem:///"), InterruptException) << entries;
    EXPECT_TRUE(utIsInterruptPending()) << "cleared only by whoever reports it";
    EXPECT_TRUE(session.failedListings().empty());
  }
}

// As a store does that is interrupted while it waits for an answer.
class InterruptedStore final : public vfs::Provider {
  Authority authority() const noexcept override { return Authority::empty; }
  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override {
    if (location.hasParent()) throw InterruptException();
    return vfs::PathKind::isFolder;
  }
  void list(vfs::AbsoluteIRI const&, std::string_view, vfs::EntrySink& entries) override {
    entries.add("x", vfs::EntryKind::unknown);
  }
};

TEST_F(Walk, AStreamIsOverAfterAnInterrupt) {
  ServedScheme const served(u"interrupted", std::make_shared<InterruptedStore>());
  io::internal::GlobStream stream(u"**", u"interrupted:///", false);
  EXPECT_THROW(stream.next(), InterruptException);
  EXPECT_EQ(stream.next(), std::nullopt);
}

TEST_F(Walk, MakesNoUnnecessaryRequests) {
  struct {
    std::string pattern;
    std::size_t requests;
    std::size_t inSession;
  } const cases[] = {
      {"d1/e/z.txt", 1, 1}, {"d1/*", 1, 1},      {"*/*", 3, 3},       {"*/y.txt", 3, 3},  // d1 and d2 aren't read
      {"**", 20, 6},        {"**/*.txt", 21, 6}, {"**/y.txt", 21, 6},  // the root, and each folder once
  };
  for (auto const& [pattern, requests, inSession] : cases) {
    store_->forgetRequests();
    search(pattern, "mem:///");
    EXPECT_LE(store_->requests(), requests) << pattern;
    ReadSession const session;
    for (std::size_t const most : {inSession, std::size_t{0}}) {
      store_->forgetRequests();
      search(pattern, "mem:///");
      EXPECT_LE(store_->requests(), most) << pattern;
    }
  }
}

TEST_F(Walk, OneSessionSeesOneStateOfAFolder) {
  Strings const before = {"d1/e", "d1/y.txt"};
  ReadSession const outer;
  EXPECT_EQ(search("d1/*", "mem:///"), before);
  store_->tree.addFile("d1/new");
  EXPECT_EQ(search("d1/*", "mem:///"), before);
  EXPECT_EQ(search("d1/new", "mem:///"), Strings{});
  {
    ReadSession const inner;
    EXPECT_EQ(search("d1/*", "mem:///"), (Strings{"d1/e", "d1/new", "d1/y.txt"}));
  }
  EXPECT_EQ(search("d1/*", "mem:///"), before);
}

}  // namespace
}  // namespace korvan::test
