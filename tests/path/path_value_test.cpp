#include <string>
#include <variant>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/exception.hpp"
#include "path/path.hpp"
#include "support/temporary_folder.hpp"
#include "support/text.hpp"

namespace {

using fl::filesystem::upath;
using foundation::storage::vfs::AbsoluteIRI;
using korvan::io::internal::Path;
using korvan::test::toBytes;
using korvan::test::toText;

TEST(PathValue, ATextBecomesALocalPathOrAnIRI) {
  struct {
    std::string text;
    std::size_t index;
    std::string string;
    std::string stringWithSeparator;
  } const cases[] = {
      {"a", 0, "a", "a/"},
      {"a/", 0, "a/", "a/"},
      {"a//", 0, "a//", "a//"},
      {"a\\", 0, "a\\", "a\\/"},
      {"/", 0, "/", "/"},
      {" a ", 0, " a ", " a /"},
      {"file:/x", 0, "file:/x", "file:/x/"},
      {"./file:///x", 0, "./file:///x", "./file:///x/"},
      {"~/$HOME", 0, "~/$HOME", "~/$HOME/"},
      {"file:///a b", 1, "file:///a%20b", "file:///a%20b/"},
      {"FILE:///a/", 1, "file:///a/", "file:///a/"},
  };
  for (auto const& c : cases) {
    Path const path(toText(c.text));
    EXPECT_EQ(path.location().index(), c.index) << c.text;
    EXPECT_FALSE(path.empty()) << c.text;
    EXPECT_EQ(toBytes(path.string(false)), c.string);
    EXPECT_EQ(toBytes(path.string(true)), c.stringWithSeparator);
    EXPECT_EQ(toBytes(path.generic(false)), c.string);
    EXPECT_EQ(toBytes(path.generic(true)), c.stringWithSeparator);
  }
}

TEST(PathValue, ABadIRIIsNoLocalPath) {
  EXPECT_THROW(Path(u"file:///a?b"), foundation::storage::vfs::InvalidIRIException);
  EXPECT_THROW(Path(u"gopher://a"), foundation::storage::vfs::UnsupportedIRISchemeException);
}

TEST(PathValue, TheEmptyPathIsLocal) {
  for (Path const& path : {Path(), Path(u""), Path(upath())}) {
    EXPECT_EQ(path.location().index(), 0U);
    EXPECT_TRUE(path.empty());
    EXPECT_EQ(path.string(false), u"");
    EXPECT_EQ(path.generic(false), u"");
    EXPECT_EQ(path, Path());
  }
}

TEST(PathValue, ComparesTextsExactly) {
  AbsoluteIRI const iri(u"file:///a");
  struct {
    Path a;
    Path b;
    bool equal;
  } const cases[] = {
      {Path(u"a"), Path(u"a"), true},
      {Path(u"a"), Path(upath(u"a", false)), true},
      {Path(u"a"), Path(u"a/"), false},
      {Path(u"a"), Path(u"A"), false},
      {Path(u"a"), Path(u"./a"), false},
      {Path(u"\xDCC3\xDCA9"), Path(u"\u00E9"), false},
      {Path(iri), Path(u"FILE:///a"), true},
      {Path(iri), Path(u"file:///a/"), false},
      {Path(iri), Path(u"file:///%61"), false},
      {Path(u"/a"), Path(iri), false},
      {Path(), Path(iri), false},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(c.a == c.b, c.equal) << toBytes(c.a.string(false)) << " and " << toBytes(c.b.string(false));
    EXPECT_EQ(c.b == c.a, c.equal);
    EXPECT_EQ(c.a != c.b, !c.equal);
    EXPECT_EQ(c.b != c.a, !c.equal);
  }
}

TEST(PathValue, BecomesAnIRI) {
  korvan::test::TemporaryFolder const folder;
  korvan::test::CurrentFolder const current(folder.path());
  AbsoluteIRI const iri(u"file:///a%20b");
  EXPECT_EQ(Path(iri).toIRI(), iri);
  EXPECT_EQ(Path(u"/a b").toIRI(), iri);
  EXPECT_NE(Path(u"/a b"), Path(Path(u"/a b").toIRI()));
  EXPECT_EQ(Path(u"x").toIRI(), foundation::storage::vfs::toAbsoluteIRI(u"file", upath(u"x")));
  EXPECT_EQ(Path(u"x").toIRI().getName(), u"x");
  EXPECT_THROW(Path(u"/\xD800").toIRI(), foundation::storage::vfs::InvalidIRIException);
}

TEST(PathValue, CarriesTheFlag) {
  Path const path(upath(u"a", false));
  EXPECT_FALSE(std::get<0>(path.location()).flag());
  EXPECT_FALSE(std::get<0>(Path(path).location()).flag());
  EXPECT_TRUE(std::get<0>(Path(u"a").location()).flag());
  EXPECT_TRUE(std::get<0>(Path().location()).flag());
}

TEST(PathValue, IsStillAPathAfterAMove) {
  for (auto const* const text :
       {u"a long enough text to live on the heap", u"file:///a/long/enough/text/to/live/there"}) {
    Path from(text);
    Path const to(std::move(from));
    EXPECT_EQ(to, Path(text));
    from = Path(u"b");
    EXPECT_EQ(from, Path(u"b"));
  }
}

}  // namespace
