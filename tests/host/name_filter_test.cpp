#include "foundation/storage/vfs/name_filter.hpp"

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/oracle.hpp"
#include "support/text.hpp"

namespace {

using foundation::storage::vfs::NameFilter;
using korvan::test::toText;

TEST(NameFilter, AgreesWithTheSlowMatcherOnAllShortNamesAndFilters) {
  // Every text of at most five characters of "a", "b" (and "*" for filters): overlaps of pieces are where a matcher
  // goes wrong.
  auto const texts = [](std::string_view alphabet) {
    std::vector<std::string> all{""};
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (all[i].size() == 5) break;
      for (char const next : alphabet) all.push_back(all[i] + next);
    }
    return all;
  };
  auto const names = texts("ab");
  for (auto const& filter : texts("ab*")) {
    NameFilter const fast(toText(filter));
    for (auto const& name : names) {
      bool const expected = korvan::test::nameMatches(name, filter);
      ASSERT_EQ(fast.matches(name), expected) << filter << " against " << name;
      if (expected) {
        ASSERT_EQ(name.rfind(fast.literalHead(), 0), 0U) << filter << " against " << name;
      }
    }
  }
}

TEST(NameFilter, StandsForCharactersNotBytes) {
  struct {
    std::u16string filter;
    std::string name;
    bool matches;
  } const cases[] = {
      {u"?", "?", true},
      {u"?", "a", false},
      {u"[a]", "a", false},
      {u"a.*", "a", false},
      {u"A*", "a", false},
      {u"*", ".hidden", true},
      {u"*", "\xFF", true},
      {u"\u00E9*", "\xC3\xA9t\xC3\xA9", true},
      {u"*\xDCFF*",
       "a\xFF"
       "b",
       true},
      {u"*\xDCA9", "\xC3\xA9", false},  // half of a character is none
      {u"\xDCC3*", "\xC3\xA9", false},
      {u"*\xDCA9", "\xC3\xA9\xA9", true},
      {u"*\xD800*", "\xED\xA0\x80", false},
      {u"\U0001F600*", "\xF0\x9F\x98\x80!", true},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(NameFilter(c.filter).matches(c.name), c.matches)
        << testing::PrintToString(c.filter) << " against " << testing::PrintToString(c.name);
  }
}

TEST(NameFilter, ManyStarsTakeNoLonger) {
  std::u16string filter;
  for (int i = 0; i < 20; ++i) filter += u"*a";
  NameFilter const many(filter + u"*b");
  std::string const name(255, 'a');
  auto const start = std::chrono::steady_clock::now();
  for (int i = 0; i < 10000; ++i) ASSERT_FALSE(many.matches(name));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_TRUE(many.matches(name.substr(1) + "b"));
}

}  // namespace
