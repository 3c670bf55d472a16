#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/entry_table.hpp"
#include "foundation/storage/vfs/detail/name_filter.hpp"
#include "quindarel/interrupt/interrupt_exception.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"
#include "support/oracle.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

using foundation::storage::vfs::EntryKind;
using foundation::storage::vfs::EntryTable;
using foundation::storage::vfs::NameFilter;
using foundation::storage::vfs::PathKind;

TEST(TextBytes, EveryByteSequenceHasAText) {
  struct {
    std::string bytes;
    std::u16string text;
  } const cases[] = {
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
      {"\x7F\xC2\x80", u"\x7F\x80"},
      {"\xDF\xBF\xE0\xA0\x80", u"\u07FF\u0800"},
      {"\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000"},
      {"\xEF\xBF\xBF\xF0\x90\x80\x80", u"\uFFFF\U00010000"},
      {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
      // Not UTF-8: each byte by itself.
      {"a\xFF\x80", u"a\xDCFF\xDC80"},
      {"\xC0\xAF\xC1\xBF", u"\xDCC0\xDCAF\xDCC1\xDCBF"},
      {"\xE0\x9F\xBF", u"\xDCE0\xDC9F\xDCBF"},
      {"\xED\xA0\x80", u"\xDCED\xDCA0\xDC80"},
      {"\xF0\x8F\xBF\xBF", u"\xDCF0\xDC8F\xDCBF\xDCBF"},
      {"\xF4\x90\x80\x80", u"\xDCF4\xDC90\xDC80\xDC80"},
      // An incomplete sequence is taken byte by byte, and decoding resumes after it.
      {"\xE6\x97", u"\xDCE6\xDC97"},
      {"\xE6\x97z\xC3\xC3\xA9", u"\xDCE6\xDC97z\xDCC3\u00E9"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(toText(c.bytes), c.text) << testing::PrintToString(c.bytes);
    EXPECT_EQ(toBytes(c.text), c.bytes);
  }
  for (std::u16string const none : {u"\xD800", u"a\xDBFF", u"\xD83Dz", u"\xDC00", u"\xDC7F", u"\xDD00", u"\xDFFF"}) {
    std::string bytes;
    EXPECT_FALSE(foundation::core::text::appendBytes(bytes, none)) << testing::PrintToString(none);
  }
  EXPECT_EQ(foundation::core::text::toBytesLossy(u"\xDCFF\u00E9\xD800!"), "\xFF\xC3\xA9\xEF\xBF\xBD!");
}

TEST(NameFilter, AgreesWithTheSlowMatcherOnAllShortNamesAndFilters) {
  // Every text of at most five characters, as matchers go wrong where pieces overlap.
  auto const texts = [](std::string_view alphabet) {
    std::vector<std::string> all{""};
    for (std::size_t i = 0; all[i].size() < 5; ++i) {
      for (char const next : alphabet) all.push_back(all[i] + next);
    }
    return all;
  };
  auto const names = texts("ab");
  for (auto const& filter : texts("ab*")) {
    NameFilter const fast(toText(filter));
    for (auto const& name : names) {
      bool const expected = nameMatches(name, filter);
      ASSERT_EQ(fast.matches(name), expected) << filter << " against " << name;
      ASSERT_TRUE(!expected || name.rfind(fast.literalHead(), 0) == 0) << filter << " against " << name;
    }
  }
}

TEST(EntryTable, SortsByBytesAndRemovesDuplicateNames) {
  std::mt19937 random(11);
  std::set<std::string> expected;
  EntryTable table;
  for (auto const* const none : {"", ".", ".."}) table.add(none, EntryKind::folder);
  for (int i = 0; i < 20000; ++i) {
    std::string name = random() % 2 == 0 ? "common start " : "";
    for (auto left = 1 + random() % 4; left > 0; --left)
      name += std::string_view("\0 -.Aab\x7F\xC3\xFF", 10)[random() % 10];
    if (name == "." || name == "..") continue;
    bool const isNew = expected.insert(name).second;
    table.add(name, isNew || random() % 2 == 0 ? EntryKind::file : EntryKind::link);
  }
  table.add(*expected.begin(), EntryKind::folder);
  table.sort();
  ASSERT_EQ(table.size(), expected.size());
  EXPECT_EQ(table.kind(0), PathKind::isFolder);
  std::size_t i = 0;
  for (std::string const& name : expected) {
    ASSERT_EQ(table.name(i), name);
    ASSERT_EQ(table.find(name), i++);
    ASSERT_EQ(table.find(name + "x"), EntryTable::npos);
  }
}

TEST(EntryTable, StopsWhenAnInterruptIsPending) {
  EntryTable table;
  auto const fill = [&table] {
    for (int i = 0; i < 200000; ++i) table.add(std::to_string(i * 7919 % 1000003), EntryKind::file);
  };
  fill();
  utSetInterruptPending(true);
  EXPECT_THROW(table.sort(), Quindarel::System::InterruptException);
  EXPECT_THROW(fill(), Quindarel::System::InterruptException);
  utSetInterruptPending(false);
}

}  // namespace
}  // namespace korvan::test
