#include <cstddef>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "quindarel/interrupt/interrupt_poll.hpp"
#include "support/c_interface_fixture.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

using Operation = MemoryProvider::Operation;

TEST_F(CInterface, GivesBlocksOfWholeMatches) {
  serveLongPaths();
  CSearch search(longPaths_, "mem:///");
  std::size_t blocks = 0;
  for (; search.next() == KGLOB_OK && search.length > 0; ++blocks) {
    EXPECT_LT(search.length, (64U << 10) + search.matches.back().size() + 1);
  }
  EXPECT_GE(blocks, 4U);
  EXPECT_EQ(search.matches, korvan::test::search(longPaths_, "mem:///"));
  EXPECT_EQ(search.next(), KGLOB_OK);
  EXPECT_EQ(search.length, 0U) << "still the end";
  EXPECT_EQ(kglob_error(search), nullptr);
}

TEST_F(CInterface, PassesBytesOnUnchanged) {
  TemporaryFolder const folder;
  Strings const names = {"\x01\xff", "a\nb", "\xe2\x82", "\xe2\x82\xac"};
  for (auto const& name : names) folder.addFile(name);
  CSearch search("*", folder.path());
  EXPECT_EQ(search.finish(), KGLOB_OK);
  EXPECT_EQ(search.matches, names);
}

TEST_F(CInterface, ReportsErrorsAsTheBuiltinDoes) {
  serve(Tree().addFile("denied 1").addFile("broken"));
  provider_->failures = {{{Operation::kind, "denied 1"}, vfs::ErrorCode::permissionDenied},
                         {{Operation::kind, "broken"}, vfs::ErrorCode::other}};
  std::string const storage = "KORVAN:virtualfilesystem:";
  std::string const invalidFile = "KORVAN:automation:io:FileIO:InvalidFile";
  struct Case {
    std::string pattern;
    kglob_status status;
    std::string identifier;
    std::string location;
  };
  Case const cases[] = {
      {"mem:///denied%201", KGLOB_PERMISSION_DENIED, storage + "permissionDenied", "mem:///denied%201"},
      {"denied 1", KGLOB_PERMISSION_DENIED, storage + "permissionDenied", "mem:///denied%201"},
      {"broken", KGLOB_INACCESSIBLE, invalidFile, "mem:///broken"},
      {"mem:///%zz", KGLOB_INVALID_IRI, storage + "invalidIRI", "mem:///%zz"},
      {"NoSuch://x/*", KGLOB_UNSUPPORTED_SCHEME, storage + "unsupportedProvider", "nosuch"},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.pattern);
    CSearch search(c.pattern, "mem:///");
    ASSERT_EQ(search.finish(), c.status);
    kglob_failure const error = *kglob_error(search);
    EXPECT_EQ(error.status, c.status);
    EXPECT_EQ(error.identifier, c.identifier);
    EXPECT_EQ(error.location, c.location);
    EXPECT_STRNE(error.reason, "");
    EXPECT_STRNE(error.message, "");
  }

  TemporaryFolder const folder;
  folder.addFolder("current");
  CurrentFolder const current(folder.path() + "/current");
  std::filesystem::remove(folder.path() + "/current");
  CSearch search("*", nullptr);
  EXPECT_EQ(search.finish(), KGLOB_NOT_FOUND);
  EXPECT_STREQ(kglob_error(search)->identifier, "KORVAN:interpreter:CurrentFolderUnknown");
}

TEST_F(CInterface, ReportsUnreadableFoldersOneByOne) {
  serve(Tree().addFile("a/1").addFile("b/2").addFile("c/3"));
  provider_->failures = {{{Operation::list, "a"}, vfs::ErrorCode::permissionDenied},
                         {{Operation::list, "c"}, vfs::ErrorCode::other}};
  CSearch search("**/*", "mem:///");
  EXPECT_EQ(search.finish(), KGLOB_OK);
  EXPECT_EQ(search.matches, (Strings{"a", "b", "c", "b/2"}));
  std::vector<std::pair<kglob_status, std::string>> failures;
  while (auto const* const failure = kglob_next_failure(search)) {
    failures.emplace_back(failure->status, failure->location);
    EXPECT_STREQ(failure->reason, "injected");
  }
  EXPECT_EQ(failures, (decltype(failures){{KGLOB_PERMISSION_DENIED, "mem:///a"}, {KGLOB_INACCESSIBLE, "mem:///c"}}));
}

TEST_F(CInterface, SearchesSeveralPatternsInOneSession) {
  serve(Tree().addFile("a/1").addFile("b/2").addFile("c"));
  provider_->failures = {{{Operation::list, "b"}, vfs::ErrorCode::other}};
  kglob_options options = KGLOB_OPTIONS_INIT;
  options.root_folder = "mem:///";
  struct Case {
    char const* pattern;
    kglob_status status;
    Strings matches;
    std::size_t failures;
  };
  Case const cases[] = {{"*", KGLOB_OK, {"a", "b", "c"}, 0},
                        {"none", KGLOB_OK, {}, 0},
                        {"nosuch://x/*", KGLOB_UNSUPPORTED_SCHEME, {}, 0},
                        {"*/*", KGLOB_OK, {"a/1"}, 1},
                        {"*/", KGLOB_OK, {"a/", "b/"}, 0}};
  std::vector<char const*> patterns;
  for (Case const& c : cases) patterns.push_back(c.pattern);
  CSearch search(patterns, &options);
  EXPECT_EQ(kglob_next_pattern(search), 0) << "before the end of the first";
  for (Case const& c : cases) {
    SCOPED_TRACE(c.pattern);
    search.matches.clear();
    EXPECT_EQ(search.finish(), c.status);
    EXPECT_EQ(search.next(), c.status) << "still the end";
    EXPECT_EQ(search.matches, c.matches);
    EXPECT_EQ(kglob_error(search) == nullptr, c.status == KGLOB_OK);
    std::size_t failures = 0;
    while (kglob_next_failure(search) != nullptr) ++failures;
    EXPECT_EQ(failures, c.failures);
    EXPECT_EQ(kglob_next_pattern(search), &c == std::end(cases) - 1 ? 0 : 1);
  }
  EXPECT_EQ(search.next(), KGLOB_OK) << "still the last pattern";
  EXPECT_EQ(provider_->mostRequests(Operation::list), 1U);

  // So many ends that they fill blocks, and errors of the whole search.
  CSearch many(std::vector<char const*>(5000, "c"), &options);
  do EXPECT_EQ(many.finish(), KGLOB_OK);
  while (kglob_next_pattern(many) != 0);
  EXPECT_EQ(many.matches, Strings(5000, "c"));
  EXPECT_EQ(CSearch(std::vector<char const*>(), &options).finish(), KGLOB_OK);
  CSearch null({"c", nullptr}, &options);
  EXPECT_EQ(null.finish(), KGLOB_INVALID_ARGUMENT);
  EXPECT_EQ(kglob_next_pattern(null), 0);
  provider_->onEntry = [] {
    for (;; std::this_thread::sleep_for(std::chrono::milliseconds(1))) utThrowIfInterruptPending();
  };
  CSearch cancelled({"**", "c"}, &options);
  kglob_cancel(cancelled);
  EXPECT_EQ(cancelled.finish(), KGLOB_INTERRUPTED);
  EXPECT_EQ(kglob_next_pattern(cancelled), 0);
}

TEST_F(CInterface, ReportsFactsOfTheMatchesOfABlock) {
  TemporaryFolder const folder;
  folder.addFile("a/file");
  std::filesystem::create_symlink("nowhere", folder.path() + "/link");
  std::filesystem::resize_file(folder.path() + "/a/file", 7);
  std::string const& root = folder.path();
  kglob_options options = KGLOB_OPTIONS_INIT;
  options.root_folder = root.c_str();
  options.facts = KGLOB_ALL_FACTS;
  CSearch search({"*", "none", "*/file", "**"}, &options);
  kglob_facts facts{};
  facts.size = sizeof facts;
  std::vector<std::uint32_t> kinds;
  do {
    while (search.next() == KGLOB_OK && search.length > 0) {
      std::size_t index = 0;
      for (; kglob_get_facts(search, index, &facts) != 0; ++index) kinds.push_back(facts.kind);
      EXPECT_EQ(facts.known, 0U) << "there is no further match";
    }
    EXPECT_EQ(kglob_get_facts(search, 0, &facts), 0) << "at the end";
  } while (kglob_next_pattern(search) != 0);
  EXPECT_EQ(search.matches, (Strings{"a", "link", "a/file", "a", "a/file", "link"}));
  EXPECT_EQ(kinds, (decltype(kinds){KGLOB_FOLDER, KGLOB_LINK, KGLOB_FILE, KGLOB_FOLDER, KGLOB_FILE, KGLOB_LINK}));

  CSearch file("a/file", &options);
  EXPECT_EQ(file.next(), KGLOB_OK);
  EXPECT_NE(kglob_get_facts(file, 0, &facts), 0);
  EXPECT_EQ(facts.known, std::uint32_t{KGLOB_HAS_BYTES | KGLOB_HAS_TIME});
  EXPECT_EQ(facts.bytes, 7U);
  EXPECT_STREQ(facts.etag, "");
}

TEST_F(CInterface, ChecksItsArguments) {
  serve(Tree().addFile(".a").addFile("b"));
  struct Grown {
    kglob_options known = KGLOB_OPTIONS_INIT;
    std::size_t unknown = 0;
  } grown;
  grown.known.size = sizeof grown;
  grown.known.root_folder = "mem:///";
  grown.known.include_dot_files = 1;
  auto const statusOf = [](char const* pattern, kglob_options const& options) {
    CSearch search(pattern, &options);
    return search.finish();
  };
  CSearch all("*", &grown.known);
  EXPECT_EQ(all.finish(), KGLOB_OK);
  EXPECT_EQ(all.matches, (Strings{".a", "b"}));
  EXPECT_EQ(statusOf(nullptr, grown.known), KGLOB_INVALID_ARGUMENT);
  grown.unknown = 1;
  EXPECT_EQ(statusOf("*", grown.known), KGLOB_INVALID_ARGUMENT);
  grown.known.size = sizeof(kglob_options);
  EXPECT_EQ(statusOf("*", grown.known), KGLOB_OK);
  grown.known.facts = KGLOB_ALL_FACTS + 1;
  EXPECT_EQ(statusOf("*", grown.known), KGLOB_INVALID_ARGUMENT);
  grown.known.facts = KGLOB_NO_FACTS;
  grown.known.reserved = 1;
  EXPECT_EQ(statusOf("*", grown.known), KGLOB_INVALID_ARGUMENT);
  grown.known.size = 0;
  EXPECT_EQ(statusOf("*", grown.known), KGLOB_INVALID_ARGUMENT);
  grown.known.size = offsetof(kglob_options, include_dot_files);
  CSearch older("*", &grown.known);
  EXPECT_EQ(older.finish(), KGLOB_OK);
  EXPECT_EQ(older.matches, Strings{"b"});
}

}  // namespace
}  // namespace korvan::test
