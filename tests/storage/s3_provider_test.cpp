#include "foundation/storage/s3/s3_provider.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/s3/url.hpp"
#include "foundation/storage/vfs/exception.hpp"

namespace foundation::storage::s3 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vfs::PathKind;

/// A store of one bucket "b" in memory, which answers as the protocol has it, in pages of a chosen length.
class StoreInMemory : public Transport {
 public:
  StoreInMemory(std::set<std::string> keys, std::size_t pageLength) : keys_(std::move(keys)), pageLength_(pageLength) {}

  Outcome get(std::string const& url, std::chrono::milliseconds) override {
    ++requests;
    auto const question = url.find('?');
    Answer answer;
    answer.status = 404;
    answer.body = "<Error><Code>NoSuchBucket</Code></Error>";
    if (url.substr(0, question) == "http://store/b") {
      answer.status = 200;
      answer.body = page(parameters(url.substr(question + 1)));
    }
    return answer;
  }

  std::size_t requests = 0;

 private:
  using Parameters = std::map<std::string, std::string>;

  static Parameters parameters(std::string query) {
    Parameters all;
    for (query += '&'; !query.empty(); query.erase(0, query.find('&') + 1)) {
      auto const equals = query.find('=');
      all[query.substr(0, equals)] = percentDecode(query.substr(equals + 1, query.find('&') - equals - 1)).value();
    }
    return all;
  }

  std::string page(Parameters asked) const {
    std::string const prefix = asked["prefix"];
    std::string const after = std::max(asked["start-after"], asked["continuation-token"]);
    std::size_t const most =
        std::min(pageLength_, asked.contains("max-keys") ? std::stoul(asked["max-keys"]) : pageLength_);
    std::string text = "<ListBucketResult><EncodingType>url</EncodingType>";
    std::string previous;
    std::size_t count = 0;
    bool truncated = false;
    for (std::string const& key : keys_) {
      if (!key.starts_with(prefix)) continue;
      auto const slash = asked["delimiter"].empty() ? std::string::npos : key.find('/', prefix.size());
      std::string const name = key.substr(0, slash == std::string::npos ? slash : slash + 1);
      if (name <= after || name == previous) continue;
      if (truncated = count++ == most; truncated) break;
      previous = name;
      text += slash == std::string::npos
                  ? "<Contents><Key>" + percentEncode(name) + "</Key></Contents>"
                  : "<CommonPrefixes><Prefix>" + percentEncode(name) + "</Prefix></CommonPrefixes>";
    }
    text += truncated ? "<IsTruncated>true</IsTruncated><NextContinuationToken>" + previous + "</NextContinuationToken>"
                      : "<IsTruncated>false</IsTruncated>";
    return text + "</ListBucketResult>";
  }

  std::set<std::string> keys_;
  std::size_t pageLength_;
};

vfs::AbsoluteIRI iri(std::string const& pathAndBucket) {
  std::string const text = "s3://" + pathAndBucket;
  return vfs::AbsoluteIRI::fromWrittenForm(core::text::fromBytes(text), 2,
                                           static_cast<std::uint32_t>(std::min(text.find('/', 5), text.size())));
}

/// The provider over such a store.
struct Served {
  explicit Served(std::set<std::string> keys, std::size_t pageLength = 1000) {
    auto transport = std::make_unique<StoreInMemory>(std::move(keys), pageLength);
    memory = transport.get();
    Configuration configuration;
    configuration.endpoint = "http://store";
    auto store = std::make_unique<Store>(configuration, std::move(transport), systemClock());
    provider = std::make_unique<Provider>(
        [held = std::make_shared<std::unique_ptr<Store>>(std::move(store))] { return std::move(*held); });
  }

  /// The entries, folders with a "/".
  std::vector<std::string> list(std::string const& folder, std::string const& prefix = "") {
    vfs::EntryTable table;
    provider->list(iri(folder), prefix, table);
    table.sort();
    std::vector<std::string> names;
    for (std::size_t i = 0; i < table.size(); ++i)
      names.push_back(std::string(table.name(i)) + (table.kind(i) == PathKind::isFolder ? "/" : ""));
    return names;
  }

  std::size_t requests() { return std::exchange(memory->requests, 0); }

  StoreInMemory* memory;
  std::unique_ptr<Provider> provider;
};

TEST(S3Provider, KindsTakeAtMostTwoRequests) {
  std::set<std::string> keys{"both", "both/x", "deep/er/x", "dot/../x", "file", "marker/", "only-after-many/x"};
  for (int i = 0; i < 300; ++i) keys.insert("only-after-many-" + std::to_string(i));
  for (int i = 0; i < 300; ++i) keys.insert("file-" + std::to_string(i));
  Served served(keys);
  struct Case {
    std::string location;
    PathKind kind;
    std::size_t requests;
  };
  Case const cases[] = {
      {"b", PathKind::isFolder, 1},
      {"b/", PathKind::isFolder, 1},
      {"nobucket", PathKind::notFound, 1},
      {"nobucket/x", PathKind::notFound, 1},
      {"b/both", PathKind::isFolder, 1},
      {"b/both/", PathKind::isFolder, 1},
      {"b/both/x", PathKind::isFile, 1},
      {"b/both/x/", PathKind::notFound, 1},
      {"b/deep", PathKind::isFolder, 1},
      {"b/deep/er", PathKind::isFolder, 1},
      {"b/dee", PathKind::notFound, 1},
      {"b/dot", PathKind::isFolder, 1},
      {"b/dot/../file", PathKind::isFile, 2},
      {"b/marker", PathKind::isFolder, 1},
      {"b/marker/", PathKind::isFolder, 1},
      {"b/file/x", PathKind::notFound, 1},
      {"b/file", PathKind::isFile, 2},
      {"b/only-after-many", PathKind::isFolder, 2},
      {"b/only-after", PathKind::notFound, 2},
      {"b/\xFF", PathKind::notFound, 0},
      {"b/" + std::string(1025, 'k'), PathKind::notFound, 0},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(served.provider->kind(iri(c.location)), c.kind) << c.location;
    EXPECT_EQ(served.requests(), c.requests) << c.location;
  }
}

TEST(S3Provider, AListingIsWholeAndCostsARequestAPage) {
  std::set<std::string> keys;
  std::vector<std::string> expected;
  for (int i = 1000; i < 3500; ++i) {
    keys.insert("wide/" + std::to_string(i));
    expected.push_back(std::to_string(i));
  }
  keys.insert("wide/");
  Served served(keys);
  EXPECT_EQ(served.list("b/wide"), expected);
  EXPECT_EQ(served.requests(), 3U);
  EXPECT_EQ(served.list("b/wide", "20").size(), 100U);
  EXPECT_EQ(served.requests(), 1U);
}

TEST(S3Provider, FoldersHoldWhatAPathCanName) {
  Served served(
      {"a//b", "d/", "d//x", "d/./x", "d/../x", "d/..", "d/f", "d/f/x", "d/n\nl", "d/m/", "d/\xC3\xA4", "e/", "x"}, 2);
  EXPECT_THAT(served.list("b"), ElementsAre("a/", "d/", "e/", "x"));
  EXPECT_THAT(served.list("b/d"), ElementsAre("f/", "m/", "n\nl", "\xC3\xA4"));
  EXPECT_THAT(served.list("b/a"), IsEmpty());
  EXPECT_THAT(served.list("b/e/"), IsEmpty());
  EXPECT_THAT(served.list("b/d", "\xC3"), testing::Contains("\xC3\xA4"));
  for (char const* const missing : {"b/x", "b/no", "b/d/f/x", "nobucket", "nobucket/d"}) {
    try {
      served.list(missing);
      ADD_FAILURE() << missing;
    } catch (vfs::Exception const& error) {
      EXPECT_EQ(error.getErrorCode(), 1) << missing;
    }
  }
}

TEST(S3Provider, FlatPagesLeaveOutWhatNoPathNamesAndComeToAnEnd) {
  std::set<std::string> keys{"d/", "d/../x", "d/a", "d/a/x", "d/b/", "d/c//1", "d/c//2", "d/c/x", "d/e//1", "d/z", "o"};
  for (char c = 'a'; c <= 'z'; ++c) keys.insert(std::string("d/f/./") + c);
  std::vector<std::string> const all{"a", "a/x", "b/", "c/", "c/x", "e/", "f/", "z"};
  for (std::size_t const pageLength : {1U, 2U, 3U, 1000U}) {
    Served served(keys, pageLength);
    std::vector<std::string> found;
    std::string after;
    bool last = false;
    for (std::size_t pages = 0; !last && pages <= keys.size(); ++pages) {
      vfs::SubtreePage const page = served.provider->subtree(iri("b/d"), "", after);
      EXPECT_EQ(served.requests(), 1U);
      found.insert(found.end(), page.paths.begin(), page.paths.end());
      after = page.position;
      last = page.last;
    }
    EXPECT_TRUE(last);
    EXPECT_EQ(found, all) << pageLength;
  }
  Served served(keys);
  EXPECT_THAT(served.provider->subtree(iri("b/d"), "c/", "").paths, ElementsAre("c/", "c/x"));
  EXPECT_THAT(served.provider->subtree(iri("b/d"), "", "a").paths, testing::Not(testing::Contains("a")));
  EXPECT_THAT(served.provider->subtree(iri("nobucket"), "", "").paths, IsEmpty());
}

TEST(S3Provider, AConfigurationThatCannotBeUsedIsAStorageError) {
  Provider provider([]() -> std::unique_ptr<Store> { throw ConfigurationError("half a pair"); });
  try {
    provider.kind(iri("b/x"));
    ADD_FAILURE();
  } catch (vfs::Exception const& error) {
    EXPECT_EQ(error.getErrorCode(), 3);
    EXPECT_EQ(error.reason(), "half a pair");
  }
}

}  // namespace
}  // namespace foundation::storage::s3
