#include <string>

#include <gtest/gtest.h>

#include "fl/filesystem/path.hpp"
#include "fl/filesystem/text.hpp"
#include "support/text.hpp"

namespace {

namespace detail = fl::filesystem::detail;
using korvan::test::toBytes;
using korvan::test::toText;

TEST(LocalPathText, SplitsAtTheLastElement) {
  struct {
    char const* text;
    char const* parent;
    char const* name;
    char const* stem;
    char const* extension;
  } const cases[] = {
      {"", "", "", "", ""},
      {"a", "", "a", "a", ""},
      {"a/b", "a", "b", "b", ""},
      {"a/", "a", "", "", ""},
      {"/", "/", "", "", ""},
      {"/a", "/", "a", "a", ""},
      {"/a/b", "/a", "b", "b", ""},
      {"//", "/", "", "", ""},
      {"a//b", "a/", "b", "b", ""},
      {"a//", "a/", "", "", ""},
      {"a/.", "a", ".", ".", ""},
      {"..", "", "..", "..", ""},
      {"a\\b", "", "a\\b", "a\\b", ""},
      {"C:\\x/y.tar.gz", "C:\\x", "y.tar.gz", "y.tar", ".gz"},
      {"d.d/.hid", "d.d", ".hid", ".hid", ""},
      {"x.", "", "x.", "x", "."},
  };
  for (auto const& c : cases) {
    auto const elements = detail::extract_pathname_elements(toText(c.text));
    EXPECT_EQ(toBytes(elements.parent), c.parent) << c.text;
    EXPECT_EQ(toBytes(elements.name), c.name) << c.text;
    EXPECT_EQ(toBytes(elements.stem), c.stem) << c.text;
    EXPECT_EQ(toBytes(elements.extension), c.extension) << c.text;
    EXPECT_EQ(toBytes(detail::extract_parent_path(toText(c.text))), c.parent) << c.text;
    EXPECT_EQ(detail::is_absolute(toText(c.text)), c.text[0] == '/') << c.text;
    EXPECT_EQ(toBytes(detail::extract_root_name(toText(c.text))), "") << c.text;
  }
}

TEST(LocalPathText, JoinsWithOneSeparator) {
  struct {
    char const* text;
    char const* element;
    char const* joined;
  } const cases[] = {
      {"a", "b", "a/b"},    {"a/", "b", "a/b"},  {"/", "b", "/b"},  {"a", "/b", "a/b"},      {"a/", "/b", "a/b"},
      {"a", "///b", "a/b"}, {"a", "b/", "a/b/"}, {"a", "/", "a/"},  {"a//", "b", "a//b"},    {"", "b", "b"},
      {"", "/b", "/b"},     {"a", "..", "a/.."}, {"a", ".", "a/."}, {"a", "b//c", "a/b//c"}, {"a\\", "b", "a\\/b"},
  };
  for (auto const& c : cases) {
    for (bool const flag : {true, false}) {
      std::u16string text = toText(c.text);
      detail::concatenate_pathname(text, toText(c.element), flag);
      EXPECT_EQ(toBytes(text), c.joined) << c.text << " + " << c.element;
    }
  }
}

TEST(LocalPathText, NothingIsInterpreted) {
  for (auto const* const text : {"~", "~user/x", "$HOME", "%TEMP%", "a\\b", "./a/../b//", "file:///x"}) {
    for (bool const flag : {true, false}) {
      EXPECT_EQ(toBytes(detail::make_native_form(toText(text), flag)), text);
      EXPECT_EQ(toBytes(detail::make_expanded_path(toText(text), flag)), text);
    }
    EXPECT_EQ(toBytes(detail::make_generic_form(toText(text))), text);
    EXPECT_EQ(toBytes(fl::filesystem::upath(toText(text)).native()), text);
  }
}

TEST(LocalPathText, ThePathCarriesItsFlag) {
  EXPECT_TRUE(fl::filesystem::upath().flag());
  EXPECT_TRUE(fl::filesystem::upath(u"a").flag());
  EXPECT_FALSE(fl::filesystem::upath(u"a", false).flag());
}

}  // namespace
