#include <string>
#include <variant>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/exception.hpp"
#include "path/path.hpp"
#include "support/text.hpp"

namespace {

using fl::filesystem::upath;
using korvan::io::internal::Path;
using korvan::test::toBytes;
using korvan::test::toText;

std::string text(Path const& path) {
  return toBytes(path.string(false));
}

TEST(PathComposition, AppendsAnElement) {
  struct {
    std::string path;
    std::string element;
    std::string joined;
  } const cases[] = {
      {"a", "b", "a/b"},
      {"a/", "b", "a/b"},
      {"a", "b/", "a/b/"},
      {"a", "/b", "a/b"},
      {"/", "b", "/b"},
      {"a", "", "a"},
      {"a/", "", "a/"},
      {"", "b", "b"},
      {"", "/b", "/b"},
      {"", "", ""},
      {"a", "..", "a/.."},
      {"a", "file:///x", "a/file:///x"},
      {"", "file:///x", "file:///x"},  // a local path all the same
      {"file:///a", "b", "file:///a/b"},
      {"file:///a", "", "file:///a"},
      {"file:///a/", "100%", "file:///a/100%25"},
      {"file:///a", "/b", "file:///b"},
      {"file:///a", "file:///b", "file:///b"},
  };
  for (auto const& c : cases) {
    Path const before(toText(c.path));
    Path path = before;
    Path const joined = path / toText(c.element);
    EXPECT_EQ(path, before) << c.path;
    EXPECT_EQ(text(joined), c.joined) << c.path << " / " << c.element;
    EXPECT_EQ(joined.location().index(), before.location().index());
    EXPECT_EQ(&path.append(toText(c.element)), &path);
    EXPECT_EQ(path, joined);
  }
}

TEST(PathComposition, AppendKeepsTheFlagOfAPathWithText) {
  struct {
    char16_t const* path;
    char16_t const* element;
    bool flag;
  } const cases[] = {{u"a", u"b", false}, {u"a", u"", false}, {u"", u"b", true}, {u"", u"", true}};
  for (auto const& c : cases) {
    Path const joined = Path(upath(c.path, false)) / c.element;
    EXPECT_EQ(std::get<0>(joined.location()).flag(), c.flag) << text(joined);
  }
}

TEST(PathComposition, AFailedAppendChangesNothing) {
  Path path(u"file:///a");
  EXPECT_THROW(path.append(u"gopher://x"), foundation::storage::vfs::UnsupportedIRISchemeException);
  EXPECT_THROW(path.append(u"\xD800"), foundation::storage::vfs::InvalidIRIException);
  EXPECT_EQ(path, Path(u"file:///a"));
}

TEST(PathComposition, FallsIntoParentAndName) {
  struct {
    std::string path;
    std::string parent;
    std::string name;
  } const cases[] = {
      {"", "", ""},
      {"a", "", "a"},
      {"a/b", "a", "b"},
      {"a/", "a", ""},
      {"/a", "/", "a"},
      {"/", "/", ""},
      {"**/*.txt", "**", "*.txt"},
      {"a\\b", "", "a\\b"},
      {"file:///a/b%20c", "file:///a", "b c"},
      {"file:///a/", "file:///a", ""},
      {"file:///a", "file:///", "a"},
      {"file:///", "file:///", ""},
      {"file:///**/*.txt", "file:///**", "*.txt"},
  };
  for (auto const& c : cases) {
    Path const path(toText(c.path));
    EXPECT_EQ(text(path.parent()), c.parent) << c.path;
    EXPECT_EQ(toBytes(path.name()), c.name) << c.path;
    EXPECT_EQ(path.parent().location().index(), path.location().index()) << c.path;
    EXPECT_EQ(text(path), text(Path(toText(c.path)))) << c.path;
  }
  EXPECT_TRUE(std::get<0>(Path(upath(u"a/b", false)).parent().location()).flag());
}

}  // namespace
