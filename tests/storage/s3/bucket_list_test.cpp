#include "foundation/storage/s3/bucket_list.hpp"

#include <gmock/gmock.h>

#include "foundation/storage/s3/s3_provider.hpp"
#include "foundation/storage/vfs/detail/entry_table.hpp"
#include "foundation/storage/vfs/detail/iri_access.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::s3 {
namespace {

using testing::HasSubstr;

std::string pageOf(std::vector<std::string> const& names, std::string const& more = {}) {
  std::string page = "<?xml version='1.0'?><ListAllMyBucketsResult xmlns=\"x\"><Owner><ID>o</ID></Owner><Buckets>\n";
  for (auto const& name : names) page += "<Bucket><CreationDate>today</CreationDate><Name>" + name + "</Name></Bucket>";
  return page + "</Buckets>" + more + "</ListAllMyBucketsResult>";
}

struct Answer {
  long status;
  std::string body;
};

/// Gives scripted answers and records the requests. Its clock stands still.
class ScriptedStore : public Clock, public Transport {
 public:
  ScriptedStore(std::vector<Answer> answers, std::vector<std::string>& requests)
      : answers_(std::move(answers)), requests_(requests) {}
  std::chrono::milliseconds now() override { return {}; }
  double random01() override { return 0; }
  void wait(std::chrono::milliseconds) override {}
  AttemptOutcome get(StoreRequest const& request) override {
    requests_.push_back(request.region + ' ' + request.url);
    Answer const answer = answers_.at(requests_.size() - 1);
    return Response{.status = answer.status, .body = answer.body, .requestId = {}, .region = {}, .retryAfter = {}};
  }

 private:
  std::vector<Answer> answers_;
  std::vector<std::string>& requests_;
};

TEST(S3BucketList, BucketsAreTheEntriesOfTheAccount) {
  std::string const token = "<ContinuationToken>1+/=</ContinuationToken>";
  std::string const wrongRegion = "<Error><Code>AuthorizationHeaderMalformed</Code><Region>eu-2</Region></Error>";
  std::string const first = "eu-1 https://s3.eu-1.amazonaws.com/", second = "eu-2 https://s3.eu-2.amazonaws.com/";
  struct Case {
    std::vector<Answer> answers;
    std::vector<std::string> names, requests;
    std::string failure;
    bool hasCredentials = true;
  };
  Case const cases[] = {
      {{{200, pageOf({"b", "a b&amp;%41", ".."})}}, {"a b&%41", "b"}, {first}, ""},
      {{{200, pageOf({})}}, {}, {first}, ""},
      {{{503, ""}, {200, "<html/>"}, {200, pageOf({"b"}) + "x"}, {200, pageOf({"b"})}}, {"b"}, {4, first}, ""},
      {{{400, wrongRegion}, {200, pageOf({"b"}, token)}, {200, pageOf({"c"})}},
       {"b", "c"},
       {first, second, second + "?continuation-token=1%2B%2F%3D"},
       ""},
      {{{200, pageOf({"b"}, token)}, {200, pageOf({"b"})}},
       {},
       {first, first + "?continuation-token=1%2B%2F%3D"},
       "3 malformed"},
      {{{403, "<Error><Code>AccessDenied</Code></Error>"}}, {}, {first}, "2 HTTP 403 AccessDenied"},
      {{{404, "<Error><Code>NoSuchBucket</Code></Error>"}}, {}, {first}, "3 HTTP 404 NoSuchBucket"},
      {{{200, pageOf({"a/b"})}}, {}, {first}, "3 malformed"},
      {{}, {}, {}, "2 credentials are needed", false},
  };
  vfs::AbsoluteIRI const account = vfs::IRIAccess::folderOfAuthorities(u"s3");
  for (Case const& c : cases) {
    std::vector<std::string> requests;
    S3Provider provider([&] {
      Configuration configuration;
      configuration.region = "eu-1";
      configuration.addressing = Addressing::virtualHost;
      if (c.hasCredentials) configuration.credentials = fixedCredentials("a test", {"key", "secret", ""});
      auto store = std::make_unique<ScriptedStore>(c.answers, requests);
      Clock& clock = *store;
      return std::make_unique<Client>(configuration, std::move(store), clock);
    });
    vfs::EntryTable table;
    vfs::EntrySink sink(table, false);
    std::string failure;
    try {
      provider.list(account, {}, sink);
    } catch (vfs::Exception const& error) {
      failure = std::to_string(error.getErrorCode()) + ' ' + error.reason();
      EXPECT_EQ(error.getLocation(), account);
    }
    EXPECT_THAT(failure, c.failure.empty() ? testing::Matcher<std::string>("") : HasSubstr(c.failure));
    table.sort();
    std::vector<std::string> names;
    for (std::size_t i = 0; failure.empty() && i < table.size(); ++i) names.emplace_back(table.name(i));
    EXPECT_EQ(names, c.names);
    EXPECT_EQ(requests, c.requests) << failure;
  }
}

}  // namespace
}  // namespace foundation::storage::s3
