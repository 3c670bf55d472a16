#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/s3/place.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

using namespace std::string_literals;

TEST(S3Text, EncodingIsTheOneThatSignaturesAreMadeOver) {
  EXPECT_EQ(percentEncode("AZaz09-._~"), "AZaz09-._~");
  EXPECT_EQ(percentEncode("a b+c/d*(e)':=%&?#\n\xC3\xA4"), "a%20b%2Bc%2Fd%2A%28e%29%27%3A%3D%25%26%3F%23%0A%C3%A4");
  EXPECT_EQ(
      canonicalQuery({{"prefix", "a/b"}, {"delimiter", "/"}, {"list-type", "2"}, {"empty", ""}, {"list", "x=1&y"}}),
      "delimiter=%2F&empty=&list=x%3D1%26y&list-type=2&prefix=a%2Fb");
}

TEST(S3Text, DecodingTakesWhatStoresWrite) {
  struct Case {
    std::string text;
    std::optional<std::string> bytes;
  };
  Case const cases[] = {{"a+b%2Bc%2fd%0A", "a b+c/d\n"}, {"%C3%A4", "\xC3\xA4"}, {"", ""}, {"%", std::nullopt},
                        {"a%2", std::nullopt},           {"%G0", std::nullopt}};
  for (Case const& c : cases) EXPECT_EQ(percentDecode(c.text), c.bytes) << c.text;
}

TEST(S3Text, BucketsAreFoundByPathOrByHost) {
  struct Case {
    std::string endpoint, bucket, url;
  };
  Case const cases[] = {
      {"http://127.0.0.1:80", "data", "http://127.0.0.1:80/data"},
      {"https://store/base", "My bucket", "https://store/base/My%20bucket"},
      {"", "data-1", "https://data-1.s3.eu-1.amazonaws.com/"},
      {"", "my.data", "https://s3.eu-1.amazonaws.com/my.data"},
      {"", "evil.com/x", "https://s3.eu-1.amazonaws.com/evil.com%2Fx"},
      {"", "Upper", "https://s3.eu-1.amazonaws.com/Upper"},
      {"", "-ab", "https://s3.eu-1.amazonaws.com/-ab"},
  };
  for (Case const& c : cases) {
    Configuration configuration;
    configuration.endpoint = c.endpoint;
    configuration.region = "eu-1";
    EXPECT_EQ(bucketUrl(configuration, c.bucket), c.url);
  }
}

TEST(S3Text, AnIRINamesABucketAndAKey) {
  struct Case {
    std::string iri, bucket, key;
    bool folderOnly, possible;
  };
  std::string const longest(1024, 'k');
  Case const cases[] = {
      {"s3://b", "b", "", false, true},
      {"s3://b/", "b", "", true, true},
      {"s3://b/a/c", "b", "a/c", false, true},
      {"s3://b/a/c/", "b", "a/c", true, true},
      {"s3://b//a///c//", "b", "a/c", true, true},
      {"s3://b/./a/.", "b", "a", true, true},
      {"s3://b/a/x/../c", "b", "a/c", false, true},
      {"s3://b/../../a/..", "b", "", true, true},
      {"s3://b/100%25%20+%3F%23", "b", "100% +?#", false, true},
      {"s3://../a", "..", "a", false, false},
      {"s3://b/\xFF", "b", "\xFF", false, false},
      {"s3://b/" + longest, "b", longest, false, true},
      {"s3://b/" + longest + "k", "b", longest + "k", false, false},
  };
  for (Case const& c : cases) {
    Place const place = placeOf(vfs::AbsoluteIRI::fromWrittenForm(
        core::text::fromBytes(c.iri), 2, static_cast<std::uint32_t>(std::min(c.iri.find('/', 5), c.iri.size()))));
    EXPECT_EQ(place.bucket, c.bucket) << c.iri;
    EXPECT_EQ(place.key, c.key) << c.iri;
    EXPECT_EQ(place.folderOnly, c.folderOnly) << c.iri;
    EXPECT_EQ(place.possible(), c.possible) << c.iri;
  }
}

TEST(S3Text, KeysAreCutBeforeWhatNoPathCanName) {
  struct Case {
    std::string key, part;
  };
  Case const cases[] = {{"a/b", "a/b"}, {"a/b/", "a/b/"}, {"a//b", "a/"},     {"a/./b", "a/"},     {"a/..", "a/"},
                        {"..", ""},     {"/a", ""},       {"a/...", "a/..."}, {"a/x\0y/b"s, "a/"}, {"", ""}};
  for (Case const& c : cases) EXPECT_EQ(nameablePart(c.key), c.part) << c.key;
}

TEST(S3Text, OnlyUtf8IsAskedFor) {
  struct Case {
    std::string bytes, part;
  };
  Case const cases[] = {{"a\xC3\xA4\xF0\x9F\x98\x80z", "a\xC3\xA4\xF0\x9F\x98\x80z"},
                        {"a\xC3", "a"},
                        {"\xFFz", ""},
                        {"a\xED\xA0\x80z", "a"}};
  for (Case const& c : cases) EXPECT_EQ(utf8Part(c.bytes), c.part);
}

}  // namespace
}  // namespace foundation::storage::s3
