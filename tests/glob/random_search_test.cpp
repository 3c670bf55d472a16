#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/read_session.hpp"
#include "support/memory_provider.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace {

using foundation::storage::vfs::ReadSession;
using korvan::test::encodedForIRI;
using korvan::test::expectedMatches;
using korvan::test::expectedMatchesBelow;
using korvan::test::MemoryProvider;
using korvan::test::search;
using korvan::test::ServedScheme;
using korvan::test::Strings;
using korvan::test::TemporaryFolder;
using korvan::test::Tree;

std::string const searchRoot(Tree::searchRoot);

bool leadsSideways(std::string const& pattern) {
  std::string const bounded = "/" + pattern + "/";
  return bounded.find("//", 1) + 2 < bounded.size() || bounded.find("/./") != std::string::npos ||
         bounded.find("/../") != std::string::npos;
}

// Holds the search in `root` against what is expected, without a session, in one, and in one that forgets all the time.
void expectSearch(Strings const& expected, std::string const& pattern, std::string const& root, bool dots) {
  auto const shown = [&] { return "\"" + pattern + "\" in " + root + (dots ? " with dot files" : ""); };
  ASSERT_EQ(search(pattern, root, dots), expected) << shown();
  {
    ReadSession const session;
    ASSERT_EQ(search(pattern, root, dots), expected) << shown() << " in a session";
    ASSERT_TRUE(session.failedListings().empty()) << shown() << ": " << session.failedListings()[0].what();
  }
  ReadSession const forgetful(300);
  ASSERT_EQ(search(pattern, root, dots), expected) << shown() << " in a session without memory";
}

// The pattern written out as an IRI below the root.
void expectIRISearch(Tree const& tree, std::string const& pattern, std::string const& root, bool dots) {
  if (pattern.empty() || pattern.front() == '/') return;
  bool const isLiteral = pattern.find('*') == std::string::npos;
  Strings expected = expectedMatchesBelow(tree, searchRoot, pattern, dots);
  for (auto& match : expected) {
    match = match.empty() ? root : root + "/" + encodedForIRI(match);
    if (!isLiteral && pattern.back() == '/' && match.back() != '/') match += '/';
  }
  std::string const iri = root + "/" + encodedForIRI(pattern);
  ASSERT_EQ(search(iri, "", dots), expected) << iri;
}

std::string shown(std::mt19937::result_type start, int round) {
  return "start value " + std::to_string(start) + ", round " + std::to_string(round);
}

TEST(RandomSearch, AgreesWithTheSlowMatcherInMemory) {
  std::mt19937 random(1);
  for (int round = 0; round < 400; ++round) {
    MemoryProvider::Options options;
    options.kindsUnsaid = random() % 4 == 0;
    Tree const tree = Tree::random(random, 1 + random() % 14, true);
    auto const provider = std::make_shared<MemoryProvider>(Tree(tree), options);
    ServedScheme const mem(u"mem", provider);
    for (int i = 0; i < 12; ++i) {
      SCOPED_TRACE(shown(1, round));
      std::string const pattern = korvan::test::randomPattern(random);
      bool const dots = random() % 2 == 0;
      auto const expected = expectedMatches(tree, searchRoot, pattern, dots);
      ASSERT_NO_FATAL_FAILURE(expectSearch(expected, pattern, "mem:///" + searchRoot, dots));
      ASSERT_NO_FATAL_FAILURE(expectIRISearch(tree, pattern, "mem:///" + searchRoot, dots));
      provider->forgetRequests();
      ReadSession const session;
      search(pattern, "mem:///" + searchRoot, dots);
      if (leadsSideways(pattern)) continue;
      ASSERT_LE(provider->mostRequests(MemoryProvider::Operation::list), 1U) << pattern;
    }
  }
}

TEST(RandomSearch, AgreesWithTheSlowMatcherInFlatStores) {
  std::mt19937 random(2);
  for (int round = 0; round < 600; ++round) {
    MemoryProvider::Options options;
    options.authority = MemoryProvider::Authority::required;
    options.subtreePage = 1 + random() % 6;
    options.marksEveryFolder = random() % 2 == 0;
    Tree const tree = Tree::random(random, 1 + random() % 16, false);
    ServedScheme const store(u"store", std::make_shared<MemoryProvider>(Tree(tree), options));
    for (int i = 0; i < 12; ++i) {
      SCOPED_TRACE(shown(2, round));
      std::string const pattern = korvan::test::randomPattern(random);
      if (leadsSideways(pattern)) continue;  // a flat store has no such folders
      bool const dots = random() % 2 == 0;
      auto const expected = expectedMatches(tree, searchRoot, pattern, dots);
      ASSERT_NO_FATAL_FAILURE(expectSearch(expected, pattern, "store://" + searchRoot, dots));
      ASSERT_NO_FATAL_FAILURE(expectIRISearch(tree, pattern, "store://" + searchRoot, dots));
    }
  }
}

TEST(RandomSearch, AgreesWithTheSlowMatcherOnDisk) {
  std::mt19937 random(3);
  for (int round = 0; round < 150; ++round) {
    Tree const tree = Tree::random(random, 1 + random() % 14, true);
    TemporaryFolder const folder;
    tree.writeTo(folder);
    std::string const root = folder.path() + "/" + searchRoot;
    for (int i = 0; i < 12; ++i) {
      SCOPED_TRACE(shown(3, round));
      std::string const pattern = korvan::test::randomPattern(random);
      bool const dots = random() % 2 == 0;
      auto const expected = expectedMatches(tree, searchRoot, pattern, dots);
      ASSERT_NO_FATAL_FAILURE(expectSearch(expected, pattern, root, dots));
      ASSERT_NO_FATAL_FAILURE(expectSearch(expected, pattern, "file://" + root, dots));
      ASSERT_NO_FATAL_FAILURE(expectIRISearch(tree, pattern, "file://" + root, dots));
      korvan::test::CurrentFolder const current(root);
      ASSERT_NO_FATAL_FAILURE(expectSearch(expected, pattern, "", dots));
    }
  }
}

// Every pattern of up to three of these segments on every tree of up to two levels of these names: small, but nothing
// is left out.
TEST(RandomSearch, AgreesWithTheSlowMatcherOnAllSmallInputs) {
  Strings const paths = {"a", "a/a", "a/.b", "a/a/b", ".b/a", "ab", "ab/"};
  Strings const segments = {"**", "*", "a", "a*", ".*", "*b", ""};
  Strings patterns;
  for (auto const& first : segments) {
    patterns.push_back(first);
    if (first.empty()) continue;
    for (auto const& second : segments) {
      patterns.push_back(first + "/" + second);
      for (auto const& third : segments) patterns.push_back(first + "/" + second + "/" + third);
    }
  }
  for (unsigned chosen = 0; chosen < 1U << paths.size(); ++chosen) {
    Tree tree;
    for (std::size_t i = 0; i < paths.size(); ++i) {
      bool const isFolder = paths[i].back() == '/' || std::any_of(paths.begin(), paths.end(), [&](auto const& longer) {
                              return longer.rfind(paths[i] + "/", 0) == 0;
                            });
      if ((chosen & (1U << i)) != 0) isFolder ? tree.addFolder(paths[i]) : tree.addFile(paths[i]);
    }
    ServedScheme const mem(u"mem", std::make_shared<MemoryProvider>(Tree(tree)));
    for (auto const& pattern : patterns) {
      ReadSession const session;
      ASSERT_EQ(search(pattern, "mem:///"), expectedMatches(tree, "", pattern, false))
          << pattern << " on tree " << chosen;
    }
  }
}

}  // namespace
