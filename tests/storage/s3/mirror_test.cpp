#include <chrono>
#include <cstdlib>
#include <optional>
#include <random>

#include <gmock/gmock.h>

#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/facts.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "korvan/io/glob.hpp"
#include "support/text.hpp"

// A tree of some 3,300 files in some 370 folders, on the local disk and in a real store: searches must find the same in
// both.

namespace korvan::test {
namespace {

namespace vfs = foundation::storage::vfs;
using io::internal::glob;

std::vector<std::string> onDisk(std::string const& pattern, bool dots) {
  return toBytes(glob(toText(pattern), toText(std::getenv("KORVAN_TEST_MIRROR")), dots));
}

// The same search by an IRI pattern, with its results as paths below the store's root. The root itself is left out: on
// the disk it isn't found.
std::vector<std::string> byIri(std::string const& pattern, bool dots) {
  vfs::AbsoluteIRI const root{std::u16string(u"s3://mirror")};
  std::vector<std::string> paths;
  for (std::u16string const& text : glob(vfs::AbsoluteIRI(root, toText(pattern)).toString(), u"/", dots)) {
    std::string const path = toBytes(vfs::AbsoluteIRI(text).makePathRelativeTo(root));
    if (path != ".") paths.push_back(path + (pattern.back() == '/' ? "/" : ""));
  }
  return paths;
}

// Replacing parts of the tree's paths by stars makes patterns that mostly find something.
class RandomPatterns {
 public:
  std::string next() {
    std::string const path = paths_[below(paths_.size())] + "/";
    std::string pattern;
    for (std::size_t begin = 0, end; (end = path.find('/', begin)) != std::string::npos; begin = end + 1)
      pattern += segment(path.substr(begin, end - begin)) + "/";
    if (below(6) != 0) pattern.pop_back();
    return pattern;
  }

 private:
  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }

  std::string segment(std::string name) {
    std::size_t const choice = below(4);
    if (choice == 0) return "**";
    if (std::size_t const at = below(name.size()); choice < 3) name.replace(at, below(name.size() - at + 1), "*");
    return name;
  }

  std::vector<std::string> const paths_ = onDisk("**", true);
  std::mt19937 random_{20241};
};

TEST(Mirror, RandomPatternsFindTheSame) {
  RandomPatterns patterns;
  std::size_t something = 0;
  std::optional<vfs::ReadSession> session;
  for (int i = 0; i < 400; ++i) {
    // The first patterns have a session each, so that folders are read in whole and in part; the others share one.
    if (i < 25) session.emplace();
    std::string const pattern = patterns.next();
    std::vector<std::string> const found = onDisk(pattern, i % 2 == 0);
    if (!found.empty()) ++something;
    EXPECT_EQ(found, toBytes(glob(toText(pattern), u"s3://mirror", i % 2 == 0))) << pattern;
    if (i < 100) {
      EXPECT_EQ(found, byIri(pattern, i % 2 == 0)) << pattern;
    }
  }
  EXPECT_GE(something, 200U);
}

TEST(Mirror, FactsComeWithTheListing) {
  auto const storage = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
  vfs::ReadSession const session(vfs::ReadSession::defaultMemoryBound, {.collectFacts = true});
  std::vector<vfs::EntryFacts> found;
  for (std::u16string const pattern : {u"s3://facts/*", u"s3://facts/*/*", u"s3://mirror/wide/00*"}) {
    auto const matches = glob(pattern, u"/", false);
    std::uint64_t const requests = session.activity().requests;
    for (auto const& match : matches) found.push_back(vfs::facts(vfs::AbsoluteIRI(match), storage).value());
    EXPECT_EQ(session.activity().requests, requests);
  }
  ASSERT_EQ(found.size(), 2U + 1U + 100U);
  EXPECT_EQ(found[0], vfs::EntryFacts{.kind = vfs::EntryKind::folder});
  EXPECT_EQ(found[2].size, 5U);
  EXPECT_EQ(found[2].etag, "827ccb0eea8a706c4c34a16891f84e7b");  // of "12345", by MD5
  auto const now = std::chrono::system_clock::now().time_since_epoch() / std::chrono::seconds(1);
  for (vfs::EntryFacts const& facts : found) {
    if (facts.kind == vfs::EntryKind::folder) continue;
    EXPECT_EQ(facts.storageClass, "STANDARD");
    ASSERT_TRUE(facts.size && facts.modified);
    EXPECT_NEAR(static_cast<double>(facts.modified->seconds), static_cast<double>(now), 3600);
  }
  // A literal pattern lists nothing.
  EXPECT_EQ(vfs::facts(vfs::AbsoluteIRI(u"s3://facts/none"), storage), found[1]);
}

}  // namespace
}  // namespace korvan::test
