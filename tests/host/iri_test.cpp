#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "fl/filesystem/operations.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/exception.hpp"
#include "support/memory_provider.hpp"
#include "support/oracle.hpp"
#include "support/temporary_folder.hpp"
#include "support/text.hpp"

namespace {

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::InvalidIRIException;
using foundation::storage::vfs::Provider;
using foundation::storage::vfs::UnsupportedIRISchemeException;
using korvan::test::encodedForIRI;
using korvan::test::MemoryProvider;
using korvan::test::ServedScheme;
using korvan::test::toBytes;
using korvan::test::toText;
using korvan::test::Tree;

// "mem" has no authority, as "file"; "bucket" needs one.
class IRI : public testing::Test {
 protected:
  static std::shared_ptr<Provider> provider(Provider::Authority authority) {
    MemoryProvider::Options options;
    options.authority = authority;
    return std::make_shared<MemoryProvider>(Tree(), options);
  }
  ServedScheme mem_{u"mem", provider(Provider::Authority::empty)};
  ServedScheme bucket_{u"bucket", provider(Provider::Authority::required)};
};

AbsoluteIRI iri(std::string const& bytes) {
  return AbsoluteIRI(toText(bytes));
}
std::string written(AbsoluteIRI const& location) {
  return toBytes(location.toString());
}

TEST_F(IRI, PrefixIsASchemeAndThreeCharacters) {
  for (auto const* const text : {"file://", "FILE:///x", "a://", "s3://b", "a+b-c.9://x", "nobody-serves-this://"}) {
    EXPECT_TRUE(foundation::storage::vfs::hasIRIPrefix(toText(text))) << text;
  }
  for (auto const* const text : {"", "file", "file:", "file:/", "file:/x", "://x", "9a://x", "a b://x", "/file:///x",
                                 " file:///x", "a_b://x", "http:", "\xC3\xA9://x"}) {
    EXPECT_FALSE(foundation::storage::vfs::hasIRIPrefix(toText(text))) << text;
  }
}

TEST_F(IRI, HasOneWrittenForm) {
  struct {
    std::string text;
    std::string written;
  } const cases[] = {
      {"file:///a/b", "file:///a/b"},
      {"FILE:///A/b", "file:///A/b"},
      {"file://localhost/a", "file:///a"},
      {"file://LocalHost/a", "file:///a"},
      {"file:///a b", "file:///a%20b"},
      {"file:///a%20b", "file:///a%20b"},
      {"file:///%c3%a9", "file:///%C3%A9"},
      {"file:///\xC3\xA9", "file:///\xC3\xA9"},
      {"file:///\xF0\x9F\x98\x80", "file:///\xF0\x9F\x98\x80"},
      {"file:///\xFF", "file:///%FF"},
      {"file:///*/**.csv", "file:///*/**.csv"},
      {"file:///\"<>\\^{|}`", "file:///%22%3C%3E%5C%5E%7B%7C%7D%60"},
      {"file:///\x01\x1F\x7F\n", "file:///%01%1F%7F%0A"},
      {"file:///!$&'()+,;=:@~-._", "file:///!$&'()+,;=:@~-._"},
      {"file:///a/../b/./c//", "file:///a/../b/./c//"},
      {"mem:///x", "mem:///x"},
      {"bucket://b/x", "bucket://b/x"},
      {"bucket://b", "bucket://b"},
      {"bucket://b/", "bucket://b/"},
  };
  for (auto const& c : cases) {
    AbsoluteIRI const location = iri(c.text);
    EXPECT_EQ(written(location), c.written);
    EXPECT_EQ(iri(written(location)), location) << "read again: " << c.written;
  }
}

TEST_F(IRI, RefusesWhatWouldLoseMeaning) {
  for (std::u16string const text :
       {u"no prefix", u"", u"file://host/x", u"file:///a%2", u"file:///100%", u"file:///a%zz", u"file:///a?b",
        u"file:///a#b", u"file:///?", u"file:///\xD800", u"bucket:///x", u"bucket://", u"bucket://b?x"}) {
    try {
      AbsoluteIRI const location(text);
      ADD_FAILURE() << testing::PrintToString(text) << " is " << written(location);
    } catch (InvalidIRIException const& e) {
      EXPECT_EQ(e.getInvalidIRIString(), text);
      EXPECT_EQ(e.getErrorCode(), 3);
      EXPECT_NE(std::string(e.what()), "");
    }
  }
  for (auto const* const text : {"gopher://x/y", "GOPHER:///%"}) {
    try {
      iri(text);
      ADD_FAILURE() << text;
    } catch (UnsupportedIRISchemeException const& e) {
      EXPECT_EQ(toBytes(e.getScheme()), "gopher");
    }
  }
}

TEST_F(IRI, FallsIntoParentAndName) {
  struct {
    std::string text;
    bool hasParent;
    std::string parent;
    std::string name;
  } const cases[] = {
      {"file:///a/b", true, "file:///a", "b"},
      {"file:///a/b/", true, "file:///a/b", ""},
      {"file:///a", true, "file:///", "a"},
      {"file:///", false, "file:///", ""},
      {"file:///a%20b/c%25", true, "file:///a%20b", "c%"},
      {"file:///a//b", true, "file:///a/", "b"},
      {"file:///a/..", true, "file:///a", ".."},
      {"file:///x/%FF", true, "file:///x", "\xFF"},
      {"bucket://b/x", true, "bucket://b/", "x"},
      {"bucket://b/", false, "bucket://b/", ""},
      {"bucket://b", false, "bucket://b", ""},
  };
  for (auto const& c : cases) {
    AbsoluteIRI const location = iri(c.text);
    EXPECT_EQ(location.hasParent(), c.hasParent) << c.text;
    EXPECT_EQ(written(location.getParent()), c.parent) << c.text;
    EXPECT_EQ(toBytes(location.getName()), c.name) << c.text;
  }
}

TEST_F(IRI, IsResolvedByTextAlone) {
  struct {
    std::string text;
    std::string resolved;
  } const cases[] = {
      {"file:///a/./b/../c", "file:///a/c"},
      {"file:///a/b/", "file:///a/b"},
      {"file:///a/b/..", "file:///a"},
      {"file:///a/b/.", "file:///a/b"},
      {"file:///../../a", "file:///a"},
      {"file:///a/..", "file:///"},
      {"file:///", "file:///"},
      {"file:///%61%7E%2a", "file:///a~*"},
      {"file:///%2e%2E/a%20b", "file:///a%20b"},
      {"file:///%C3%A9", "file:///\xC3\xA9"},
      {"file:///%FF%23", "file:///%FF%23"},
      {"bucket://b", "bucket://b/"},
      {"bucket://b/..", "bucket://b/"},
      {"bucket://b/x/", "bucket://b/x"},
  };
  for (auto const& c : cases) {
    AbsoluteIRI const resolved = iri(c.text).getResolvedIRI();
    EXPECT_EQ(written(resolved), c.resolved) << c.text;
    EXPECT_EQ(resolved.getResolvedIRI(), resolved) << c.text;
  }
}

TEST_F(IRI, LeadsFromOneToAnother) {
  struct {
    std::string to;
    std::string from;
    std::string path;
  } const cases[] = {
      {"file:///a/b", "file:///a", "b"},
      {"file:///a", "file:///a/b", ".."},
      {"file:///a", "file:///a/", "."},
      {"file:///a/x%20y%25", "file:///a/b/c", "../../x y%"},
      {"file:///", "file:///a", ".."},
      {"file:///a/./b/../c", "file:///a", "c"},
      {"bucket://b/x", "bucket://b", "x"},
      {"bucket://b", "bucket://b/", "."},
      // What would read as something else says that it is relative.
      {"file:///a/http://x", "file:///a", "./http://x"},
      {"file:///a//x", "file:///a", ".//x"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(toBytes(iri(c.to).makePathRelativeTo(iri(c.from))), c.path) << c.to << " from " << c.from;
  }
  EXPECT_THROW(iri("file:///a").makePathRelativeTo(iri("mem:///a")), std::runtime_error);
  EXPECT_THROW(iri("bucket://a/x").makePathRelativeTo(iri("bucket://b/x")), std::runtime_error);
  EXPECT_THROW(iri("bucket://a").makePathRelativeTo(iri("bucket://ab")), std::runtime_error);
}

TEST_F(IRI, TakesDecodedTextBelowItself) {
  struct {
    std::string base;
    std::string text;
    std::string joined;
  } const cases[] = {
      {"file:///a", "b", "file:///a/b"},
      {"file:///a/", "b", "file:///a/b"},
      {"file:///a", "", "file:///a"},
      {"file:///a/", "", "file:///a/"},
      {"file:///", "b", "file:///b"},
      {"file:///a", "/b", "file:///b"},
      {"file:///a", "b/", "file:///a/b/"},
      {"file:///a", "../b/.", "file:///a/../b/."},
      {"file:///a", "100%#1?.csv", "file:///a/100%25%231%3F.csv"},
      {"file:///a", "a%20b", "file:///a/a%2520b"},
      {"file:///a", "\xFF \xC3\xA9", "file:///a/%FF%20\xC3\xA9"},
      {"file:///a", "http:", "file:///a/http:"},
      {"file:///a", "mem:///b", "mem:///b"},
      {"bucket://b", "x", "bucket://b/x"},
      {"bucket://b/y", "/x", "bucket://b/x"},
      {"bucket://b", "", "bucket://b"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(written(AbsoluteIRI(iri(c.base), toText(c.text))), c.joined) << c.base << " + " << c.text;
  }
  EXPECT_THROW(AbsoluteIRI(iri("file:///a"), u"x\xD800"), InvalidIRIException);
  EXPECT_THROW(AbsoluteIRI(iri("file:///a"), u"gopher://x"), UnsupportedIRISchemeException);
}

TEST_F(IRI, NamesALocalPath) {
  struct {
    std::u16string scheme;
    std::string path;
    std::string written;
  } const cases[] = {
      {u"file", "/a/b", "file:///a/b"},
      {u"file", "/", "file:///"},
      {u"file", "/a b%20/#?", "file:///a%20b%2520/%23%3F"},
      {u"file", "/a/../b//c/", "file:///a/../b//c/"},
      {u"mem", "/x", "mem:///x"},
      {u"bucket", "/b/x/y", "bucket://b/x/y"},
      {u"bucket", "/b", "bucket://b"},
      {u"bucket", "/b/", "bucket://b/"},
  };
  for (auto const& c : cases) {
    auto const location = foundation::storage::vfs::toAbsoluteIRI(c.scheme, fl::filesystem::upath(toText(c.path)));
    EXPECT_EQ(written(location), c.written);
    EXPECT_EQ(toBytes(foundation::storage::vfs::fromAbsoluteIRI(location).native()), c.path);
    EXPECT_EQ(iri(c.written), location);
  }
  EXPECT_THROW(foundation::storage::vfs::toAbsoluteIRI(u"bucket", fl::filesystem::upath(u"/")), InvalidIRIException);
  EXPECT_THROW(foundation::storage::vfs::toAbsoluteIRI(u"file", fl::filesystem::upath(u"/\xD800")),
               InvalidIRIException);
  EXPECT_THROW(foundation::storage::vfs::toAbsoluteIRI(u"gopher", fl::filesystem::upath(u"/x")),
               UnsupportedIRISchemeException);
}

TEST_F(IRI, NamesARelativePathFromTheCurrentFolder) {
  korvan::test::TemporaryFolder const folder;
  korvan::test::CurrentFolder const current(folder.path());
  auto const here = toBytes(fl::filesystem::canonical(fl::filesystem::upath(u"."), {}).native());
  for (std::string const path : {"x", "", "a b"}) {
    auto const location = foundation::storage::vfs::toAbsoluteIRI(u"file", fl::filesystem::upath(toText(path)));
    EXPECT_EQ(written(location), "file://" + encodedForIRI(here + (path.empty() ? "" : "/" + path)));
  }
}

// Names of any bytes, and texts whose surrogates stand for bytes by themselves.
TEST_F(IRI, LosesNoName) {
  std::mt19937 random(7);
  for (int i = 0; i < 5000; ++i) {
    std::string path;
    for (auto elements = 1 + random() % 3; elements > 0; --elements) {
      path += '/';
      for (auto bytes = 1 + random() % 6; bytes > 0; --bytes) {
        auto const byte = static_cast<char>(1 + random() % 255);
        path += byte == '/' ? '*' : byte;
      }
    }
    fl::filesystem::upath const local(toText(path));
    auto const location = foundation::storage::vfs::toAbsoluteIRI(u"file", local);
    ASSERT_EQ(foundation::storage::vfs::fromAbsoluteIRI(location).native(), local.native());
    ASSERT_EQ(foundation::storage::vfs::decodedPath(location), path);
    ASSERT_EQ(written(location), "file://" + encodedForIRI(path));
    ASSERT_EQ(AbsoluteIRI(location.toString()), location);
    ASSERT_EQ(AbsoluteIRI(location.getParent(), location.getName()), location);
  }
  // Two of them in a row read as one character: the name is the same, its bytes.
  auto const location = foundation::storage::vfs::toAbsoluteIRI(u"file", fl::filesystem::upath(u"/\xDCC3\xDCA9"));
  EXPECT_EQ(foundation::storage::vfs::decodedPath(location), "/\xC3\xA9");
  EXPECT_EQ(location.getResolvedIRI(), iri("file:///\xC3\xA9"));
}

}  // namespace
