#include "foundation/storage/vfs/entry_table.hpp"

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "interrupt/interrupt_exception.hpp"
#include "interrupt/interrupt_state.hpp"

namespace {

using foundation::storage::vfs::EntryKind;
using foundation::storage::vfs::EntryTable;
using foundation::storage::vfs::PathKind;

std::vector<std::string> namesOf(EntryTable const& table) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < table.size(); ++i) names.emplace_back(table.name(i));
  return names;
}

TEST(EntryTable, SortsByBytesAndKeepsNamesApart) {
  using namespace std::string_literals;
  std::vector<std::string> const sorted = {"\x01"s,
                                           " "s,
                                           "-"s,
                                           "A"s,
                                           "a"s,
                                           "a\0"s,
                                           "a\0b"s,
                                           "a b"s,
                                           "a.txt"s,
                                           "aaaaaaaa"s,
                                           "aaaaaaaa1"s,
                                           "aaaaaaaab"s,
                                           "aaaaaaab"s,
                                           "b"s,
                                           "\xC3\xA9"s,
                                           "\xE6\x97\xA5"s,
                                           "\xEE\x80\x80"s,
                                           "\xF0\x9F\x98\x80"s,
                                           "\xFF"s};
  auto shuffled = sorted;
  std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(3));
  EntryTable table;
  for (auto const& name : shuffled) table.add(name, EntryKind::file);
  for (auto const* const none : {"", ".", ".."}) table.add(none, EntryKind::folder);
  table.sort();
  EXPECT_EQ(namesOf(table), sorted);
  for (std::size_t i = 0; i < sorted.size(); ++i) EXPECT_EQ(table.find(sorted[i]), i);
  for (auto const& absent : {""s, "."s, "a\0\0"s, "aaaaaaa"s, "\xFF\xFF"s, "B"s}) {
    EXPECT_EQ(table.find(absent), EntryTable::npos) << absent;
  }
  EXPECT_EQ(EntryTable().find("a"), EntryTable::npos);
}

TEST(EntryTable, KeepsOneEntryOfAName) {
  for (bool const folderFirst : {true, false}) {
    EntryTable table;
    table.add("longer than eight bytes", folderFirst ? EntryKind::folder : EntryKind::file);
    table.add("a", EntryKind::file);
    table.add("longer than eight bytes", folderFirst ? EntryKind::file : EntryKind::folder);
    table.sort();
    EXPECT_EQ(namesOf(table), (std::vector<std::string>{"a", "longer than eight bytes"}));
    EXPECT_EQ(table.kind(1), PathKind::isFolder);
  }
}

TEST(EntryTable, TellsKindsAsFarAsKnown) {
  struct {
    char const* name;
    EntryKind told;
    std::optional<PathKind> kind;
    bool maybeLink;
  } const cases[] = {
      {"a", EntryKind::file, PathKind::isFile, false},
      {"b", EntryKind::folder, PathKind::isFolder, false},
      {"c", EntryKind::link, std::nullopt, true},
      {"d", EntryKind::unknown, std::nullopt, true},
  };
  EntryTable table;
  for (auto const& c : cases) table.add(c.name, c.told);
  table.sort();
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(table.kind(i), cases[i].kind) << cases[i].name;
    EXPECT_EQ(table.maybeLink(i), cases[i].maybeLink) << cases[i].name;
  }
  for (auto const found : {PathKind::isFile, PathKind::isFolder, PathKind::notFound}) {
    table.setKind(2, found);
    EXPECT_EQ(table.kind(2), found);
    EXPECT_TRUE(table.maybeLink(2));
    EXPECT_EQ(table.name(2), "c");
  }
}

TEST(EntryTable, SortsManyRandomNames) {
  std::mt19937 random(11);
  std::set<std::string> expected;
  EntryTable table;
  for (int i = 0; i < 20000; ++i) {
    std::string name = random() % 2 == 0 ? "common start " : "";
    for (auto left = 1 + random() % 4; left > 0; --left) name += static_cast<char>('a' + random() % 8);
    expected.insert(name);
    table.add(name, EntryKind::file);
  }
  table.sort();
  EXPECT_EQ(namesOf(table), std::vector<std::string>(expected.begin(), expected.end()));
}

TEST(EntryTable, EndsWhenAnInterruptIsPending) {
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
