#include "korvan/io/path.hpp"

#include <random>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "fl/filesystem/fsys_exception.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "support/memory_provider.hpp"
#include "support/temporary_folder.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

using namespace io::internal;
using fl::filesystem::upath;

Path path(std::string const& bytes) {
  return Path(toText(bytes));
}
std::string text(Path const& path) {
  return toBytes(path.string(false));
}
bool flag(Path const& path) {
  return std::get<0>(path.location()).flag();
}

TEST(PathAlgebra, ATextBecomesALocalPathOrAnIRIWithParentAndName) {
  struct {
    std::string text;
    std::size_t index;
    std::string written, withSeparator, parent, name;
  } const cases[] = {
      {"a", 0, "a", "a/", "", "a"},
      {"a/", 0, "a/", "a/", "a", ""},
      {"a\\", 0, "a\\", "a\\/", "", "a\\"},
      {"/", 0, "/", "/", "/", ""},
      {"/a", 0, "/a", "/a/", "/", "a"},
      {"//", 0, "//", "//", "/", ""},
      {"file:/x", 0, "file:/x", "file:/x/", "file:", "x"},
      {"./file:///x", 0, "./file:///x", "./file:///x/", "./file://", "x"},
      {"~/$HOME", 0, "~/$HOME", "~/$HOME/", "~", "$HOME"},
      {"FILE:///a b", 1, "file:///a%20b", "file:///a%20b/", "file:///", "a b"},
      {"file:///a/", 1, "file:///a/", "file:///a/", "file:///a", ""},
      {"file:///", 1, "file:///", "file:///", "file:///", ""},
      {"file:///**/*.txt", 1, "file:///**/*.txt", "file:///**/*.txt/", "file:///**", "*.txt"},
  };
  for (auto const& c : cases) {
    Path const path(toText(c.text));
    EXPECT_EQ(path.location().index(), c.index) << c.text;
    EXPECT_FALSE(path.empty()) << c.text;
    EXPECT_EQ(text(path), c.written);
    EXPECT_EQ(toBytes(path.string(true)), c.withSeparator);
    EXPECT_EQ(toBytes(path.generic(false)), c.written);
    EXPECT_EQ(toBytes(path.generic(true)), c.withSeparator);
    EXPECT_EQ(text(path.parent()), c.parent) << c.text;
    EXPECT_EQ(path.parent().location().index(), c.index) << c.text;
    EXPECT_EQ(toBytes(path.name()), c.name) << c.text;
  }
  EXPECT_THROW(Path(u"file:///a?b"), vfs::InvalidIRIException);
  EXPECT_THROW(Path(u"gopher://a"), vfs::UnsupportedIRISchemeException);
}

TEST(PathAlgebra, ComparesTextsExactly) {
  vfs::AbsoluteIRI const iri(u"file:///a");
  struct {
    Path a, b;
    bool equal;
  } const cases[] = {
      {Path(), Path(u""), true},
      {Path(), Path(upath(u"", false)), true},
      {Path(u"a"), Path(upath(u"a", false)), true},
      {Path(u"a"), Path(u"a/"), false},
      {Path(u"a"), Path(u"./a"), false},
      {Path(u"\xDCC3\xDCA9"), Path(u"\u00E9"), false},
      {Path(iri), Path(u"FILE:///a"), true},
      {Path(iri), Path(u"file:///a/"), false},
      {Path(iri), Path(u"/a"), false},
      {Path(iri), Path(), false},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(c.a == c.b, c.equal) << text(c.a) << " and " << text(c.b);
    EXPECT_EQ(c.b == c.a, c.equal);
    EXPECT_EQ(c.a != c.b, !c.equal);
  }
  EXPECT_TRUE(Path().empty());
  EXPECT_EQ(Path().location().index(), 0U);
  EXPECT_EQ(Path(u"/a").toIRI(), iri);
  EXPECT_EQ(Path(iri).toIRI(), iri);
}

TEST(PathAlgebra, AMovedFromPathIsStillValid) {
  for (auto const* const text :
       {"a text that is too long to be short", "file:///a/text/that/is/too/long/to/be/short"}) {
    Path from = path(text);
    Path const to(std::move(from));
    EXPECT_EQ(to, path(text));
    EXPECT_EQ(from.name(), u"");  // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move): as tested
    EXPECT_EQ((from / u"x").parent().name(), u"");  // NOLINT(clang-analyzer-cplusplus.Move)
  }
}

TEST(PathAlgebra, AppendsAnElement) {
  struct {
    std::string path, element, joined;
  } const cases[] = {
      {"a", "b/", "a/b/"},
      {"a/", "b", "a/b"},
      {"a/", "///b", "a/b"},
      {"a\\", "b//c", "a\\/b//c"},
      {"/", "b", "/b"},
      {"a", "", "a"},
      {"", "b", "b"},
      {"", "", ""},
      {"a", "file:///x", "a/file:///x"},
      {"", "file:///x", "file:///x"},  // still a local path
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
  Path path(u"file:///a");
  EXPECT_THROW(path.append(u"gopher://x"), vfs::UnsupportedIRISchemeException);
  EXPECT_THROW(path.append(u"\xD800"), vfs::InvalidIRIException);
  EXPECT_EQ(path, Path(u"file:///a")) << "a failed append changes nothing";
}

TEST(PathAlgebra, TheFlagIsSetInPathsMadeFromTextAndOtherwiseCopied) {
  Path const off(upath(u"a/b", false));
  for (Path const& copied : {off, off / u"b", off / u""}) EXPECT_FALSE(flag(copied)) << text(copied);
  Path const none(upath(u"", false));
  for (Path const& set : {Path(), Path(u"a"), off.parent(), none / u"b", none / u""})
    EXPECT_TRUE(flag(set)) << text(set);
}

// What paths name, with a current folder on disk and two more schemes, of which "bucket" requires an authority.
class PathRelations : public testing::Test {
 protected:
  PathRelations() {
    folder_.addFile("d/e/x");
    folder_.addLink("link", "d/e");
  }

  TemporaryFolder const folder_;
  CurrentFolder const current_{folder_.path()};
  ServedScheme const mem_{u"mem", std::make_shared<MemoryProvider>(Tree())};
  ServedScheme const bucket_{
      u"bucket", std::make_shared<MemoryProvider>(Tree(), MemoryProvider::Options{vfs::Provider::Authority::required})};
  std::string const here_ = text(canonical(Path(), Path(folder_.text())));
};

TEST_F(PathRelations, AbsoluteAndCanonicalForEachPairing) {
  struct {
    std::string path, base, absolute, canonical;
  } const cases[] = {
      // IRI against either
      {"mem:///a/../%62/", "file:///base", "mem:///a/../%62/", "mem:///b"},
      // local against IRI: in the base's scheme
      {"../a b", "mem:///base/x", "mem:///base/x/../a%20b", "mem:///base/a%20b"},
      {"", "mem:///base/", "mem:///base/", "mem:///base"},
      {"/a/..", "mem:///base", "mem:///a/..", "mem:///"},
      {"/a/x", "bucket://b/base", "bucket://a/x", "bucket://a/x"},
      {"/", "bucket://b", "bucket://", "bucket://"},
      {"b/..", "bucket://", "bucket://b/..", "bucket://b/"},
      // local against local
      {"link/x", "", here_ + "/link/x", here_ + "/d/e/x"},
      {"../link/..", "d", here_ + "/d/../link/..", here_ + "/d"},
      {"/", "d", "/", "/"},
      {"", "", here_, here_},
      {"", "link/", here_ + "/link", here_ + "/d/e"},
      {".", here_ + "/link", here_ + "/link/.", here_ + "/d/e"},
      {"", "/", "/", "/"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(text(absolute(path(c.path), path(c.base))), c.absolute) << c.path << " against " << c.base;
    EXPECT_EQ(text(canonical(path(c.path), path(c.base))), c.canonical) << c.path << " against " << c.base;
    EXPECT_TRUE(isAbsolute(path(c.absolute))) << c.absolute;
  }
  for (auto const* const text : {"", "a", "../a", "~", "\\a", "C:/a"}) EXPECT_FALSE(isAbsolute(path(text))) << text;
  EXPECT_THROW(canonical(path("nowhere"), Path()), fl::filesystem::FsysExceptionBase);
  EXPECT_THROW(canonical(Path(), path("/nowhere")), fl::filesystem::FsysExceptionBase);
}

TEST_F(PathRelations, RelativeForEachPairing) {
  struct {
    std::string path, base, relative;
  } const cases[] = {
      {"", "", "."},
      {"", "d", ".."},
      {"link/x", "d", "e/x"},
      // local, IRI: in the base's scheme
      {"a b", "mem:///base", "a b"},
      {"/a", "mem:///base", "../a"},
      // IRI, local: from the "file" IRI
      {"file:///x/y%20z", "/x", "y z"},
      {"file://" + here_ + "/d", "", "d"},
      {"mem:///x", "/x", ""},
      {"mem:///a/b", "mem:///a/c/", "../b"},
  };
  for (auto const& c : cases) {
    Path const result = relative(path(c.path), path(c.base));
    EXPECT_EQ(text(result), c.relative) << c.path << " from " << c.base;
    EXPECT_EQ(result.location().index(), 0U);
  }
}

TEST_F(PathRelations, SameFileForEachPairing) {
  struct {
    std::string a, b;
    bool same;
  } const cases[] = {
      {"link", "d/e", true},
      {"d/./e/..", here_ + "/d", true},
      {"d", "d/e", false},
      {"mem:///a/%62/../c/", "mem:///a/c", true},
      {"mem:///a", "file:///a", false},
      {"file://" + here_ + "/d/./e", "d/e", true},
      {"file:///nowhere/x", "/nowhere/y/../x", true},
      {"file://" + here_ + "/link", "d/e", false},  // IRIs are compared as text
      {"mem://" + here_ + "/d", "d", false},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(isSameFile(path(c.a), path(c.b)), c.same) << c.a << " and " << c.b;
    EXPECT_EQ(isSameFile(path(c.b), path(c.a)), c.same) << c.b << " and " << c.a;
  }
  EXPECT_THROW(isSameFile(path("d"), path("nowhere")), fl::filesystem::FsysExceptionBase);
}

TEST_F(PathRelations, ABaseJoinedWithTheRelativePathLeadsBack) {
  std::mt19937 random(5);
  auto const below = [&](Path top, std::vector<std::string> const& elements) {
    for (auto left = random() % 6; left > 0; --left) top.append(toText(elements[random() % elements.size()]));
    return top;
  };
  folder_.addFolder("f/f/f/f/f/f/f/f/f/f/f");  // deep enough for every local path to exist
  for (int i = 0; i < 6000; ++i) {
    bool const isLocal = i < 1000;
    Path const top = path(isLocal ? "f/f/f/f/f/f" : "mem:///x");
    std::vector<std::string> const elements =
        isLocal ? std::vector<std::string>{"f", "..", "."}
                : std::vector<std::string>{"a", "b", "..", ".", "a b", "100%", "\xFF", "http:", "\xC3\xA9", "c//d"};
    Path const a = below(top, elements);
    Path const b = below(top, elements);
    Path const route = relative(b, a);
    ASSERT_TRUE(isSameFile(a / route.string(false), b)) << text(a) << " to " << text(b) << " by " << text(route);
    ASSERT_EQ(isSameFile(a, b), isSameFile(b, a));
  }
}

}  // namespace
}  // namespace korvan::test
