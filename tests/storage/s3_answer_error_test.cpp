#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/storage/s3/answer_error.hpp"

namespace foundation::storage::s3 {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string errorBody(std::string const& code, std::string const& more = "") {
  return "<?xml version='1.0'?>\n<Error><Code>" + code + "</Code><Message>said so</Message>" + more + "</Error>";
}

Configuration signedConfiguration() {
  Configuration configuration;
  configuration.region = "eu-1";
  configuration.credentials = Credentials{"key", "s3cret", "t0ken"};
  return configuration;
}

vfs::Exception mapped(Result const& result, Configuration const& configuration = signedConfiguration()) {
  return exceptionOfResult(result, configuration, vfs::AbsoluteIRI::fromWrittenForm(u"s3://b/k", 2, 6));
}

Result answered(long status, std::string body) {
  Answer answer;
  answer.status = status;
  answer.body = std::move(body);
  answer.requestId = "id-7";
  return {answer, 1, std::chrono::milliseconds(5)};
}

TEST(S3AnswerError, CodesAndWords) {
  struct Case {
    long status;
    std::string body;
    int code;
    std::string reason;
  };
  Case const cases[] = {
      {404, errorBody("NoSuchBucket"), 1, "HTTP 404 NoSuchBucket: said so (request id id-7)"},
      {404, errorBody("NoSuchKey"), 1, "HTTP 404 NoSuchKey: said so (request id id-7)"},
      {404, "<html><p>not here</html>", 3, "HTTP 404 (request id id-7)"},
      {403, errorBody("AccessDenied"), 2, "HTTP 403 AccessDenied: said so (request id id-7)"},
      {403, "go away\r\n", 2, "HTTP 403: go away (request id id-7)"},
      {401, "", 2, "HTTP 401 (request id id-7)"},
      {400, errorBody("ExpiredToken"), 2, "HTTP 400 ExpiredToken: said so (request id id-7)"},
      {400, "<Errors>" + errorBody("InvalidToken").substr(22) + "</Errors>", 2,
       "HTTP 400 InvalidToken: said so (request id id-7)"},
      {503, errorBody("SlowDown"), 3, "HTTP 503 SlowDown: said so (request id id-7)"},
      {412, "Bad\nURL \x1B[31m", 3, "HTTP 412: Bad URL  [31m (request id id-7)"},
      {204, "", 3, "HTTP 204 (request id id-7)"},
      {301, errorBody("PermanentRedirect", "<Region>us-9</Region>"), 3,
       "HTTP 301 PermanentRedirect: said so; the store says that the region is \"us-9\", the request was for \"eu-1\" "
       "(see AWS_REGION) "
       "(request id id-7)"},
      {400, errorBody("Echo", "<RequestId>other</RequestId>") + "<!-- -->", 3,
       "HTTP 400 Echo: said so (request id id-7)"},
  };
  for (Case const& c : cases) {
    vfs::Exception const error = mapped(answered(c.status, c.body));
    EXPECT_EQ(error.getErrorCode(), c.code) << c.body;
    EXPECT_EQ(error.reason(), c.reason);
  }
}

TEST(S3AnswerError, NoSecretIsRepeated) {
  vfs::Exception const error = mapped(answered(400, "you sent s3cret and t0ken " + std::string(265, '.') + "s3cret"));
  EXPECT_THAT(error.what(), Not(HasSubstr("s3c")));
  EXPECT_THAT(error.what(), Not(HasSubstr("t0ken")));
}

TEST(S3AnswerError, UnsignedRequestsAreToldAsSuch) {
  Configuration configuration;
  EXPECT_THAT(mapped(answered(403, ""), configuration).reason(), HasSubstr("not signed"));
  EXPECT_THAT(mapped(answered(404, errorBody("NoSuchBucket")), configuration).reason(), Not(HasSubstr("not signed")));
}

TEST(S3AnswerError, FailuresTellWhatWasTried) {
  Result const result{Failure{Failure::Kind::lost, "connection reset"}, 4, std::chrono::milliseconds(2349)};
  EXPECT_EQ(mapped(result).getErrorCode(), 3);
  EXPECT_EQ(mapped(result).reason(), "connection reset (tried 4 times in 2.3 s)");
}

}  // namespace
}  // namespace foundation::storage::s3
