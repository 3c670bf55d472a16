#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/storage/s3/list_page.hpp"

namespace foundation::storage::s3 {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string pageOf(std::string const& inside) {
  return "<?xml version='1.0' encoding='UTF-8'?>\n<ListBucketResult "
         "xmlns=\"http://s3.amazonaws.com/doc/2006-03-01/\">" +
         inside + "</ListBucketResult>";
}

TEST(S3ListPage, IsReadHoweverItIsWritten) {
  ListPage const page = parseListPage(pageOf(
      "<CommonPrefixes><Prefix>a%2Fd%2f</Prefix></CommonPrefixes>\n<EncodingType>url</EncodingType><Strange><Key>no</"
      "Key></Strange>"
      "<Contents><LastModified>2026-01-01T00:00:00.123456Z</LastModified><ETag>&quot;0&quot;</ETag><Key>a/%0A+%2B</"
      "Key></Contents>"
      "<IsTruncated>true</IsTruncated><CommonPrefixes><Prefix>a/e/</Prefix><Prefix>a/f/</Prefix></CommonPrefixes>"
      "<NextContinuationToken>1+/=&amp;</NextContinuationToken>"));
  EXPECT_THAT(page.keys, ElementsAre("a/\n +"));
  EXPECT_THAT(page.commonPrefixes, ElementsAre("a/d/", "a/e/", "a/f/"));
  EXPECT_TRUE(page.truncated);
  EXPECT_EQ(page.continuationToken, "1+/=&");

  ListPage const raw = parseListPage(
      pageOf("<Contents><Key>100%+</Key></Contents><Contents><Key> </Key></Contents><IsTruncated>false</IsTruncated>"));
  EXPECT_THAT(raw.keys, ElementsAre("100%+", " "));
  EXPECT_FALSE(raw.truncated);
}

TEST(S3ListPage, WhatIsNoPageIsRefused) {
  std::string const whole = pageOf("<Contents><Key>a</Key></Contents><IsTruncated>false</IsTruncated>");
  std::string const cases[] = {
      "",
      "garbage",
      "<html><body>Sign in</body></html>",
      "<Error><Code>SlowDown</Code></Error>",
      whole.substr(0, whole.size() - 1),
      whole.substr(0, whole.find("<IsTruncated")),
      pageOf(""),
      pageOf("<IsTruncated>perhaps</IsTruncated>"),
      pageOf("<Contents><Size>1</Size></Contents><IsTruncated>false</IsTruncated>"),
      pageOf("<EncodingType>url</EncodingType><Contents><Key>a%2</Key></Contents><IsTruncated>false</IsTruncated>"),
  };
  for (std::string const& body : cases) EXPECT_THROW(parseListPage(body), BadPage) << body;
}

ListPage more(std::vector<std::string> keys, std::string token, std::vector<std::string> prefixes = {}) {
  return {std::move(keys), std::move(prefixes), true, std::move(token)};
}

ListPage last(std::vector<std::string> keys, std::vector<std::string> prefixes = {}) {
  return {std::move(keys), std::move(prefixes), false, ""};
}

TEST(S3ListPage, PagesMustFollowFromOneAnother) {
  struct Case {
    std::vector<ListPage> pages;
    bool delimited;
    char const* fault;  // of the last page; null where all are good
  };
  Case const cases[] = {
      {{more({"d/a"}, "1"), more({}, "2"), last({"d/c"}, {"d/b/"})}, true, nullptr},
      {{more({}, "1", {"d/b/"}), last({"d/c"}, {"d/b/"})}, true, nullptr},  // a prefix may be told again
      {{last({})}, true, nullptr},
      {{more({"d/a/x"}, "1"), last({"d/b"})}, false, nullptr},
      {{more({"d/a"}, "1"), more({"d/b"}, "1")}, true, "token repeats"},
      {{more({"d/a"}, "")}, true, "no token"},
      {{more({"d/a", "d/b"}, "1"), more({"d/a", "d/b"}, "2")}, true, "goes back"},
      {{more({"d/a"}, "1"), more({"d/a"}, "2")}, true, "repeats the page"},
      {{last({"e/a"})}, true, "begin with"},
      {{last({"d/a/x"})}, true, "delimiter"},
      {{last({}, {"d/a/x/"})}, true, "delimiter"},
      {{last({}, {"d/a"})}, true, "delimiter"},
      {{last({}, {"d/a/"})}, false, "delimiter"},
  };
  for (Case const& c : cases) {
    PageCheck check("d/", c.delimited);
    std::string fault;
    for (ListPage const& page : c.pages) {
      EXPECT_EQ(fault, "") << "not the last page";
      try {
        check.accept(page);
      } catch (BadPage const& bad) {
        fault = bad.what();
      }
    }
    if (c.fault == nullptr)
      EXPECT_EQ(fault, "");
    else
      EXPECT_THAT(fault, HasSubstr(c.fault));
  }
}

TEST(S3ListPage, AListingOfNothingEnds) {
  PageCheck check("", true);
  auto const endless = [&] {
    for (int i = 0; i < 100000; ++i) check.accept(more({}, std::to_string(i)));
  };
  EXPECT_THROW(endless(), BadPage);
}

TEST(S3ListPage, AListingBeginsWhereItWasAskedTo) {
  PageCheck check("d/", false, "d/m");
  EXPECT_THROW(check.accept(last({"d/a", "d/x"})), BadPage);
}

}  // namespace
}  // namespace foundation::storage::s3
