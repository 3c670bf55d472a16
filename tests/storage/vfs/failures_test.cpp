// A search passes over what it can't read or look at. Whatever the reason, the session reports it: no short answer is
// silent.

#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

#include "foundation/storage/vfs/folder.hpp"
#include "support/child_process.hpp"
#include "support/memory_provider.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

using Operation = MemoryProvider::Operation;

// The locations that the session reports, as text.
Strings reported(ReadSession const& session) {
  Strings locations;
  for (auto const& failure : session.failedListings()) locations.push_back(toBytes(failure.getLocation().toString()));
  return locations;
}

TEST(Failures, AreReportedOnceInWhateverOrderTheyAreMet) {
  Tree const tree = Tree().addFile("a/x").addFile("d/e/x").addFile("z/x").addLink("l", "d");
  struct {
    MemoryProvider::Key failing;
    bool hidesKinds;
    Strings patterns, matches, reports;
  } const cases[] = {
      {{Operation::kind, "l"}, false, {"*/", "**/x", "*/*/x"}, {"a/", "d/", "z/"}, {"mem:///l"}},
      {{Operation::kind, "l"}, false, {"**/x", "*/"}, {"a/x", "d/e/x", "z/x"}, {"mem:///l"}},
      {{Operation::kind, "d"}, true, {"**/x", "*/"}, {"a/x", "l/e/x", "z/x"}, {"mem:///d"}},
      {{Operation::kind, "d"}, true, {"*/", "**/x"}, {"a/", "l/", "z/"}, {"mem:///d"}},
      {{Operation::identity, "l"}, false, {"**/x", "**/x"}, {"a/x", "d/e/x", "z/x"}, {"mem:///l"}},
      {{Operation::identity, ""}, false, {"**/x"}, {"a/x", "d/e/x", "z/x"}, {"mem:///"}},
      {{Operation::list, "d"}, false, {"d/*", "**/x"}, {}, {"mem:///d"}},
  };
  using enum vfs::ErrorCode;
  for (auto const code : {permissionDenied, other, notFound}) {
    for (auto const& c : cases) {
      for (std::size_t const memory : {ReadSession::defaultMemoryBound, std::size_t{300}}) {
        SCOPED_TRACE(c.failing.second + " " + c.patterns[0] + " " + std::to_string(static_cast<int>(code)));
        MemoryProvider::Options options;
        options.hidesKinds = c.hidesKinds;
        auto const provider = std::make_shared<MemoryProvider>(tree, options);
        ServedScheme const mem(u"mem", provider);
        provider->failures[c.failing] = code;
        ReadSession const session(memory);
        // After an eviction more identities are needed, and so more is passed over where one can't be had.
        bool const evicts = memory == 300;
        Strings const found = search(c.patterns[0], "mem:///");
        EXPECT_TRUE(evicts || found == c.matches) << testing::PrintToString(found);
        for (std::string const& pattern : c.patterns) search(pattern, "mem:///");
        EXPECT_EQ(reported(session), code == notFound ? Strings() : c.reports);
        EXPECT_TRUE(evicts || provider->mostRequests(c.failing.first) == 1);
      }
    }
  }
}

TEST(Failures, OfRightsAreReported) {
  TemporaryFolder const folder;
  for (auto const* const file : {"t/ok/a.csv", "secret/sub/b.csv", "r/x/f"}) folder.addFile(file);
  folder.addLink("t/l", "../secret/sub");
  folder.addLink("s/l", "../../" + folder.path().substr(folder.path().rfind('/') + 1));
  auto const allow = [&](char const* name, unsigned rights) {
    std::filesystem::permissions(folder.path() + "/" + name, std::filesystem::perms{rights});
  };
  allow("secret", 0700);
  allow("r", 0444);
  struct {
    std::string root, pattern;
    Strings matches, reports;
  } const cases[] = {
      {"/t", "**/*.csv", {"ok/a.csv"}, {"/t/l"}},
      {"/t", "*/", {"ok/"}, {"/t/l"}},
      {"/t", "*", {"l", "ok"}, {}},
      {"/s",
       "**",
       {"l", "l/r", "l/r/x", "l/s", "l/secret", "l/t", "l/t/l", "l/t/ok", "l/t/ok/a.csv"},
       {"/s/l/r/x", "/s/l/secret", "/s/l/t/l"}},
  };
  EXPECT_TRUE(passesUnprivileged([&] {
    for (auto const& c : cases) {
      ReadSession const session;
      EXPECT_EQ(search(c.pattern, folder.path() + c.root), c.matches) << c.root << ' ' << c.pattern;
      Strings expected;
      for (auto const& path : c.reports) expected.push_back("file://" + folder.path() + path);
      EXPECT_EQ(reported(session), expected) << c.root << ' ' << c.pattern;
    }
  }));
  for (auto const* const name : {"secret", "r"}) allow(name, 0755);
}

TEST(Failures, ChainsOfLinksAreFollowedHoweverLong) {
  TemporaryFolder const folder;
  Strings files;
  std::string way;
  for (int i = 0; i < 50; ++i) {
    std::string const name = "d" + std::to_string(i) + "/";
    folder.addFile(name + "f");
    folder.addLink(name + "l",
                   i % 2 == 0 ? "../d" + std::to_string(i + 1) : folder.path() + "/d" + std::to_string(i + 1));
    files.push_back(way + "f");
    way += "l/";
  }
  expectSearch(files, "**/f", folder.path() + "/d0");
  expectSearch({files.back()}, files.back(), folder.path() + "/d0");
  // One link with two names: its target is relative to the folder of each.
  folder.addFile("d49/e/e/h/x");
  folder.addLink("d49/h", "e/h");
  std::filesystem::create_hard_link(folder.path() + "/d49/h", folder.path() + "/d49/e/h");
  expectSearch({way.substr(2) + "h/x"}, way.substr(2) + "h/x", folder.path() + "/d0");
}

TEST(Failures, LinksThatLeadBackAreFiles) {
  TemporaryFolder const folder;
  folder.addLink("self", "self");
  folder.addLink("a", "b");
  folder.addLink("b", "a");
  folder.addLink("grow", "grow/x");
  for (std::string const pattern : {"*", "**"}) expectSearch({"a", "b", "grow", "self"}, pattern, folder.path());
  for (std::string const pattern : {"*/", "**/", "self/*", "grow/x"}) expectSearch({}, pattern, folder.path());
  expectSearch({"grow"}, "grow", folder.path());
}

TEST(Failures, ReadingAheadNeedsNoDescriptors) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer itself needs descriptors";
#endif
  TemporaryFolder const folder;
  for (int i = 0; i < 300; ++i) folder.addFile("d" + std::to_string(i) + "/f");
  EXPECT_TRUE(passesInChild([&] {
    auto const free = static_cast<rlim_t>(::dup(0));
    ::close(static_cast<int>(free));
    rlimit const one{free + 1, free + 1};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &one), 0);
    for (int again = 0; again < 5; ++again) {
      ReadSession const session;
      EXPECT_EQ(search("**/f", folder.path()).size(), 300U);
      EXPECT_EQ(reported(session), Strings());
    }
  }));
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t smallStack = std::size_t{512} << 10;  // frames are larger
#else
constexpr std::size_t smallStack = std::size_t{64} << 10;
#endif

TEST(Failures, ASmallStackIsEnoughForADeepFolder) {
  TemporaryFolder const folder;
  std::string deepest;
  for (int i = 0; i < 700; ++i, deepest += "d/") folder.addFolder(deepest + "d");
  folder.addLink(deepest + "l", "../..");
  auto const descend = [](void* root) -> void* {
    ReadSession const session;
    vfs::Folder at(*static_cast<vfs::AbsoluteIRI*>(root), Quindarel::KorvanStorageSystem::GetStorageSystemReference());
    int depth = 0;
    for (bool deeper = true; deeper && depth < 700; ++depth) {
      auto const listing = at.listFolders(u"d");
      deeper = listing.begin() != listing.end();
      if (deeper) at = vfs::Folder(*listing.begin());
    }
    try {
      vfs::Folder const cycle(at, u"l");
    } catch (vfs::Exception const&) {
      return depth == 700 ? root : nullptr;
    }
    return nullptr;
  };
  vfs::AbsoluteIRI root(toText("file://" + folder.path()));
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, smallStack), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, descend, &root), 0);
  void* result = nullptr;
  pthread_join(thread, &result);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(result, &root);
}

TEST(Failures, ATextWithoutBytesNamesNothing) {
  TemporaryFolder const folder;
  for (auto const* const similar : {"D800", "a/D800.x"}) folder.addFile(similar);
  for (std::u16string const text :
       {u"\xD800", u"\xD800*", u"*\xDC00", u"\xD800/*", u"*/\xD800", u"**/\xD800", u"\xD800/**", u"a/\xD800.x"}) {
    for (bool const inSession : {false, true}) {
      std::optional<ReadSession> session;
      if (inSession) session.emplace();
      EXPECT_TRUE(io::internal::glob(text, folder.text(), false).empty()) << testing::PrintToString(text);
      EXPECT_TRUE(io::internal::glob(u"**", folder.text() + u"/" + text, false).empty())
          << testing::PrintToString(text);
      EXPECT_TRUE(io::internal::glob(u"*", folder.text() + u"/" + text, false).empty()) << testing::PrintToString(text);
      EXPECT_TRUE(!session || session->failedListings().empty());
    }
  }
}

}  // namespace
}  // namespace korvan::test
