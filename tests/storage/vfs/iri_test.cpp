#include <random>
#include <string>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "support/memory_provider.hpp"
#include "support/oracle.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

using fl::filesystem::upath;
using vfs::AbsoluteIRI;
using vfs::InvalidIRIException;
using vfs::toAbsoluteIRI;
using vfs::UnsupportedIRISchemeException;

// "mem" has no authority, as "file"; "bucket" needs one.
class IRI : public testing::Test {
 protected:
  ServedScheme mem_{u"mem", std::make_shared<MemoryProvider>(Tree())};
  ServedScheme bucket_{
      u"bucket", std::make_shared<MemoryProvider>(Tree(), MemoryProvider::Options{vfs::Provider::Authority::required})};
};

AbsoluteIRI iri(std::string const& bytes) {
  return AbsoluteIRI(toText(bytes));
}
std::string written(AbsoluteIRI const& location) {
  return toBytes(location.toString());
}

TEST_F(IRI, PrefixIsASchemeAndThreeCharacters) {
  for (auto const* const text : {"file://", "FILE:///x", "a://", "s3://b", "a+b-c.9://x", "nobody-serves-this://"}) {
    EXPECT_TRUE(vfs::hasIRIPrefix(toText(text))) << text;
  }
  for (auto const* const text :
       {"", "file", "file:/x", "://x", "9a://x", "a b://x", "/file:///x", "a_b://x", "http:"}) {
    EXPECT_FALSE(vfs::hasIRIPrefix(toText(text))) << text;
  }
}

TEST_F(IRI, HasOneWrittenFormAFormResolvedByTextAParentAndAName) {
  struct {
    std::string text, written, resolved, parent, name;
  } const cases[] = {
      {"FILE:///A/b", "file:///A/b", "file:///A/b", "file:///A", "b"},
      {"file://LocalHost/a", "file:///a", "file:///a", "file:///", "a"},
      {"file:///", "file:///", "file:///", "file:///", ""},
      {"file:///a b/%25", "file:///a%20b/%25", "file:///a%20b/%25", "file:///a%20b", "%"},
      {"file:///\xC3\xA9", "file:///\xC3\xA9", "file:///\xC3\xA9", "file:///", "\xC3\xA9"},
      {"file:///%c3%a9", "file:///%C3%A9", "file:///\xC3\xA9", "file:///", "\xC3\xA9"},
      {"file:///x/\xFF", "file:///x/%FF", "file:///x/%FF", "file:///x", "\xFF"},
      {"file:///\x01\"<>\\", "file:///%01%22%3C%3E%5C", "file:///%01%22%3C%3E%5C", "file:///", "\x01\"<>\\"},
      {"file:///%61%7E%2a%23", "file:///%61%7E%2A%23", "file:///a~*%23", "file:///", "a~*#"},
      {"file:///a//b", "file:///a//b", "file:///a/b", "file:///a/", "b"},
      {"file:///a/../b/./c/", "file:///a/../b/./c/", "file:///b/c", "file:///a/../b/./c", ""},
      {"file:///../../%2e%2E/a/..", "file:///../../%2E%2E/a/..", "file:///", "file:///../../%2E%2E/a", ".."},
      {"bucket://b", "bucket://b", "bucket://b/", "bucket://b", ""},
      {"bucket://b/", "bucket://b/", "bucket://b/", "bucket://b/", ""},
      {"Bucket://", "bucket://", "bucket://", "bucket://", ""},
      {"bucket://b/x/../..", "bucket://b/x/../..", "bucket://b/", "bucket://b/x/..", ".."},
  };
  for (auto const& c : cases) {
    AbsoluteIRI const location = iri(c.text);
    EXPECT_EQ(written(location), c.written);
    EXPECT_EQ(iri(c.written), location);
    EXPECT_EQ(written(location.getResolvedIRI()), c.resolved);
    EXPECT_EQ(location.getResolvedIRI().getResolvedIRI(), location.getResolvedIRI()) << c.text;
    EXPECT_EQ(location.hasParent(), c.parent != c.written) << c.text;
    EXPECT_EQ(written(location.getParent()), c.parent) << c.text;
    EXPECT_EQ(toBytes(location.getName()), c.name) << c.text;
  }
}

TEST_F(IRI, RefusesWhatWouldLoseMeaning) {
  for (std::u16string const text :
       {u"no prefix", u"", u"file://host/x", u"file:///a%2", u"file:///a%zz", u"file:///a%2Fb", u"file:///a?b",
        u"file:///a#b", u"file:///\xD800", u"bucket:///x", u"bucket:///"}) {
    try {
      ADD_FAILURE() << testing::PrintToString(text) << " is " << written(AbsoluteIRI(text));
    } catch (InvalidIRIException const& e) {
      EXPECT_EQ(e.getInvalidIRIString(), text);
      EXPECT_EQ(e.getErrorCode(), 3);
    }
  }
  EXPECT_THROW(iri("GOPHER:///%"), UnsupportedIRISchemeException);
  EXPECT_THROW(AbsoluteIRI(iri("file:///a"), u"x\xD800"), InvalidIRIException);
  EXPECT_THROW(AbsoluteIRI(iri("file:///a"), u"gopher://x"), UnsupportedIRISchemeException);
  EXPECT_THROW(AbsoluteIRI(iri("bucket://"), u"b\xD800"), InvalidIRIException);
  for (auto const* const base : {"file:///b/x", "bucket://a/x", "bucket://bb", "bucket://"}) {
    EXPECT_THROW(iri("bucket://b").makePathRelativeTo(iri(base)), std::runtime_error) << base;
  }
}

TEST_F(IRI, LeadsFromOneToAnother) {
  struct {
    std::string to, from, path;
  } const cases[] = {
      {"file:///", "file:///a/b", "../.."},
      {"file:///a", "file:///a/", "."},
      {"file:///a/x%20y%25/./d/..", "file:///a/b/c", "../../x y%"},
      {"bucket://b/x", "bucket://b", "x"},
      {"file:///a/http://x", "file:///a", "http:/x"},
      {"file:///a//x", "file:///a//", "x"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(toBytes(iri(c.to).makePathRelativeTo(iri(c.from))), c.path) << c.to << " from " << c.from;
  }
}

TEST_F(IRI, TakesDecodedTextBelowItself) {
  struct {
    std::string base, text, joined;
  } const cases[] = {
      {"file:///a", "b/", "file:///a/b/"},
      {"file:///a/", "b", "file:///a/b"},
      {"file:///a", "", "file:///a"},
      {"file:///a", "../b/.", "file:///a/../b/."},
      {"file:///a", "100%#1?.csv", "file:///a/100%25%231%3F.csv"},
      {"file:///a", "a%20b", "file:///a/a%2520b"},
      {"file:///a", "mem:///b", "mem:///b"},
      {"bucket://b", "x", "bucket://b/x"},
      {"bucket://b/y", "/x", "bucket://b/x"},
      {"bucket://", "", "bucket://"},
      {"bucket://", "b 1", "bucket://b%201"},
      {"bucket://", "b/x y/", "bucket://b/x%20y/"},
      {"bucket://", ".././/b/.", "bucket://b/."},
      {"bucket://", "/./", "bucket://"},
  };
  for (auto const& c : cases) {
    AbsoluteIRI const joined(iri(c.base), toText(c.text));
    EXPECT_EQ(written(joined), c.joined) << c.base << " + " << c.text;
    EXPECT_EQ(joined.encodedPath(), iri(c.joined).encodedPath()) << c.joined;
  }
}

// Names of any bytes, and texts whose lone surrogates are bytes.
TEST_F(IRI, LosesNoNameOfALocalPath) {
  std::mt19937 random(7);
  for (int i = 0; i < 5000; ++i) {
    std::string path;
    for (auto bytes = 1 + random() % 9; bytes > 0; --bytes) {
      // Every byte but "/", which is the one before "0", and no empty element.
      path += path.empty() || (bytes % 4 == 0 && path.back() != '/') ? '/' : static_cast<char>('0' + random() % 255);
    }
    upath const local(toText(path));
    AbsoluteIRI const location = toAbsoluteIRI(u"file", local);
    ASSERT_EQ(vfs::fromAbsoluteIRI(location).native(), local.native());
    ASSERT_EQ(vfs::decodedPath(location), path);
    ASSERT_EQ(written(location), "file://" + encodedForIRI(path));
    ASSERT_EQ(AbsoluteIRI(location.toString()), location);
    ASSERT_TRUE(path.back() == '/' || AbsoluteIRI(location.getParent(), location.getName()) == location) << path;
  }
  for (std::u16string const path : {u"/b/x/y", u"/b", u"/b/", u"/"}) {
    AbsoluteIRI const location = toAbsoluteIRI(u"bucket", upath(path));
    EXPECT_EQ(location.toString(), u"bucket:/" + path);
    EXPECT_EQ(vfs::fromAbsoluteIRI(location).native(), path);
  }
  // Two of them in a row read as one character: the name is the same, its bytes.
  EXPECT_EQ(toAbsoluteIRI(u"file", upath(u"/\xDCC3\xDCA9")).getResolvedIRI(), iri("file:///\xC3\xA9"));
}

}  // namespace
}  // namespace korvan::test
