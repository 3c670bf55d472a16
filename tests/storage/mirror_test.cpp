#include <optional>
#include <random>

#include <gmock/gmock.h>

#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "glob/glob.hpp"
#include "storage/test_store.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

namespace vfs = foundation::storage::vfs;
using io::internal::glob;

// One tree of some 3,300 files in some 370 folders, on the local disk and in a real store: a search must not tell them
// apart.
class Mirror : public testing::Test {
 protected:
  static void SetUpTestSuite() { useTestStore(); }

  static std::u16string local() { return toText(environmentVariable("KORVAN_TEST_MIRROR")); }
  static constexpr char16_t store[] = u"s3://mirror";

  static void expectSame(std::string const& pattern, bool dots, std::vector<std::string> const& onDisk) {
    EXPECT_EQ(onDisk, toBytes(glob(toText(pattern), store, dots))) << pattern << (dots ? " with dot files" : "");
  }

  // A text below a root, without the separator between, which a root may or may not end in.
  static std::string below(std::string const& text) {
    return text.substr(std::min(text.find_first_not_of('/'), text.size()));
  }

  static std::vector<std::string> onDisk(std::string const& pattern, bool dots) {
    return toBytes(glob(toText(pattern), local(), dots));
  }
};

struct Case {
  std::string pattern;
  std::size_t least;  // matches without dot files; a comparison of two empty lists would show nothing
};

std::vector<Case> const& table() {
  static std::vector<Case> const cases = {
      {"*", 30},
      {"*/", 13},
      {"top.csv", 1},
      {"top.csv/", 0},
      {"empty", 1},
      {"empty/", 1},
      {"empty/*", 0},
      {"nothing/*", 0},
      {"alpha/mid/ab.txt", 1},
      {"alpha/mid/", 1},
      {"*.csv", 1},
      {".*", 1},
      {"*/*.csv", 20},
      {"*/*/", 60},
      {"*/mid/*/*.csv", 20},
      {"*a*/*a*/*a*", 10},
      {"alpha/**", 80},
      {"alpha/**/", 25},
      {"**", 3000},
      {"**/", 300},
      {"**/*.csv", 500},
      {"**/data/**/*.txt", 50},
      {"**/data/*/", 10},
      {"**/a*b*", 200},
      {"**/.dot", 50},
      {"**/x/**/file*.csv", 10},
      {"2024/**/readme.txt", 5},
      {"a b/*", 5},
      {"100%/**/*.x", 5},
      {"a%20b/*/*", 10},
      {"#1/**/*", 10},
      {"what?/*", 5},
      {"new\nline/*/*.csv", 1},
      {"**/~*", 1},
      {"**/$HOME*", 1},
      {"**/http:*", 1},
      {"**/back\\slash*", 1},
      {"**/\xe6\x97\xa5\xe6\x9c\xac*", 1},
      {"**/\xf0\x9d\x92\xb3*", 1},
      {"**/-rf*", 1},
      {"**/...*", 1},
      {"*%*", 2},
      {"**/*[x]*", 1},
      {"**/\x01*", 1},
  };
  return cases;
}

TEST_F(Mirror, EveryPatternOfTheTableFindsTheSame) {
  for (Case const& each : table()) {
    vfs::ReadSession const session;
    std::vector<std::string> const found = onDisk(each.pattern, false);
    EXPECT_GE(found.size(), each.least) << each.pattern;
    expectSame(each.pattern, false, found);
  }
}

TEST_F(Mirror, WithoutASessionToo) {
  for (std::string const pattern : {"*", "*/*.csv", "alpha/mid/**", "alpha/mid/x/**/", "a b/*/*.x", "top.csv"}) {
    expectSame(pattern, false, onDisk(pattern, false));
  }
}

// An absolute pattern gives absolute texts; below the roots they say the same.
TEST_F(Mirror, IriTextsSayTheSameBelowTheRoot) {
  vfs::AbsoluteIRI const root{std::u16string(store)};
  vfs::ReadSession const session;
  for (Case const& each : table()) {
    std::string const prefix = toBytes(local());
    std::vector<std::string> expected;
    for (std::string const& text : onDisk(prefix + "/" + each.pattern, true)) {
      ASSERT_EQ(text.substr(0, prefix.size()), prefix);
      expected.push_back(below(text.substr(prefix.size())));
    }
    std::vector<std::string> found;
    for (std::u16string const& text : glob(vfs::AbsoluteIRI(root, toText(each.pattern)).toString(), u"/", true)) {
      std::string relative = toBytes(vfs::AbsoluteIRI(text).makePathRelativeTo(root));
      if (relative == ".") relative.clear();  // the root itself
      found.push_back(below(text.back() == u'/' ? relative + "/" : relative));
    }
    EXPECT_EQ(expected, found) << each.pattern;
  }
}

// Patterns that find something more often than not: a path of the tree, with parts of it replaced by stars.
class RandomPatterns {
 public:
  explicit RandomPatterns(std::vector<std::string> paths) : paths_(std::move(paths)) {}

  std::string next() {
    std::string const& path = paths_[below(paths_.size())];
    std::string pattern;
    for (std::size_t begin = 0; begin <= path.size();) {
      std::size_t const end = std::min(path.find('/', begin), path.size());
      if (!pattern.empty()) pattern += '/';
      pattern += segment(path.substr(begin, end - begin));
      begin = end + 1;
    }
    return below(6) == 0 && pattern.back() != '/' ? pattern + "/" : pattern;
  }

 private:
  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }

  std::string segment(std::string name) {
    switch (below(5)) {
      case 0:
        return "**";
      case 1:
        return "*";
      case 2:
        return name;
      default:
        for (std::size_t stars = 1 + below(2); stars > 0 && !name.empty(); --stars) {
          std::size_t const at = below(name.size());
          name.replace(at, below(name.size() - at + 1), "*");
        }
        return name;
    }
  }

  std::vector<std::string> paths_;
  std::mt19937 random_{20241};
};

TEST_F(Mirror, RandomPatternsFindTheSame) {
  RandomPatterns patterns(onDisk("**", true));
  std::size_t something = 0;
  std::optional<vfs::ReadSession> session;
  for (int i = 0; i < 400; ++i) {
    // The first each read anew, so that whole and partial readings of a folder are met; the rest share theirs, for
    // speed.
    if (i < 25) session.emplace();
    std::string const pattern = patterns.next();
    bool const dots = i % 2 == 0;
    std::vector<std::string> const found = onDisk(pattern, dots);
    if (!found.empty()) ++something;
    expectSame(pattern, dots, found);
  }
  EXPECT_GE(something, 200U);
}

}  // namespace
}  // namespace korvan::test
