#include <memory>
#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "support/c_search.hpp"
#include "support/memory_provider.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

std::string const& searchRoot = Tree::searchRoot;

// The same search, with the pattern written as an IRI below the root.
void expectIRISearch(Tree const& tree, std::string const& folder, std::string const& pattern, std::string const& root,
                     bool dots) {
  if (pattern.empty() || pattern.front() == '/') return;
  bool const isLiteral = pattern.find('*') == std::string::npos;
  Strings expected = expectedMatches(tree, folder, pattern, dots, true);
  std::string const above = root.ends_with('/') ? root : root + "/";
  for (auto& match : expected) {
    match = match.empty() ? root : above + encodedForIRI(match);
    if (!isLiteral && pattern.back() == '/' && match.back() != '/') match += '/';
  }
  expectSearch(expected, above + encodedForIRI(pattern), "", dots);
}

// What is below the search root, in buckets instead of its topmost entries.
Tree inBuckets(Tree const& tree) {
  Tree account;
  for (auto const& [path, kind] : tree.below(searchRoot)) {
    bool const isFolder = kind == EntryKind::folder || path.find('/') == std::string::npos;
    isFolder ? account.addFolder(path) : account.addFile(path);
  }
  return account;
}

// A random tree, served either on disk and as a store with folders, or as a store of flat keys, in one bucket or in many.
class ServedTree {
 public:
  ServedTree(std::mt19937& random, bool isFlat)
      : tree(Tree::random(random, 1 + random() % 16, !isFlat)), folder(isFlat && random() % 2 == 0 ? "" : searchRoot) {
    if (folder.empty()) tree = inBuckets(tree);
    MemoryProvider::Options options;
    options.authority = isFlat ? MemoryProvider::Authority::required : MemoryProvider::Authority::empty;
    options.subtreePage = isFlat ? 1 + random() % 6 : 0;
    options.marksEveryFolder = random() % 2 == 0;
    options.hidesKinds = random() % 4 == 0;
    provider = std::make_shared<MemoryProvider>(tree, options);
    store_.emplace(u"store", provider);
    roots = {(isFlat ? "store://" : "store:///") + folder};
    if (isFlat) return;
    tree.writeTo(disk_.emplace());
    std::string const onDisk = disk_->path() + "/" + searchRoot;
    current_.emplace(onDisk);
    roots.insert(roots.end(), {"file://" + onDisk, onDisk, ""});
  }

  Tree tree;
  std::string folder;  // of the tree, to search in
  std::shared_ptr<MemoryProvider> provider;
  Strings roots;

 private:
  std::optional<ServedScheme> store_;
  std::optional<TemporaryFolder> disk_;
  std::optional<CurrentFolder> current_;
};

TEST(RandomSearch, AgreesWithTheSlowMatcher) {
  std::mt19937 random(1);
  for (int round = 0; round < 900; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    bool const isFlat = round % 3 != 0;
    ServedTree const served(random, isFlat);
    // In every other round, the searches without a session of their own share one.
    std::optional<ReadSession> shared;
    if (round % 2 == 0) shared.emplace();
    for (int i = 0; i < 12; ++i) {
      std::string const pattern = randomPattern(random);
      bool const dots = random() % 2 == 0;
      if (isFlat && hasDotOrEmptySegment(pattern)) continue;  // a flat store has no such folders
      auto const expected = expectedMatches(served.tree, served.folder, pattern, dots);
      for (auto const& root : served.roots) {
        ASSERT_NO_FATAL_FAILURE(expectSearch(expected, pattern, root, dots));
        if (root.find("://") == std::string::npos) continue;
        ASSERT_NO_FATAL_FAILURE(expectIRISearch(served.tree, served.folder, pattern, root, dots));
      }
      served.provider->forgetRequests();
      CSearch throughC(pattern, served.roots[0], dots);
      ASSERT_EQ(throughC.finish(), KGLOB_OK) << pattern;
      ASSERT_EQ(throughC.matches, expected) << pattern;
      if (isFlat || hasDotOrEmptySegment(pattern)) continue;
      ASSERT_LE(served.provider->mostRequests(MemoryProvider::Operation::list), 1U) << pattern;
    }
  }
}

}  // namespace
}  // namespace korvan::test
