#include <gtest/gtest.h>

#include "foundation/storage/s3/credentials/json_credentials.hpp"
#include "foundation/storage/s3/credentials/local_url.hpp"
#include "foundation/storage/s3/credentials/sso_token.hpp"
#include "foundation/storage/s3/timestamp.hpp"

namespace foundation::storage::s3 {
namespace {

TEST(S3CredentialsJson, MalformedTextsAreRefusedWithoutQuotingThem) {
  struct Case {
    std::string (*parse)(std::string const&);
    std::string text, expected;  // the expiration, or the start of the message
  };
  static auto const written = [](std::chrono::sys_seconds time) {
    return std::to_string(time.time_since_epoch().count());
  };
  constexpr auto process = [](std::string const& text) {
    auto const expiration = parseProcessOutput(text).expiration;
    return expiration ? written(*expiration) : "never";
  };
  constexpr auto service = [](std::string const& text) { return written(*parseServiceCredentials(text).expiration); };
  constexpr auto role = [](std::string const& text) { return written(*parseRoleCredentials(text).expiration); };
  constexpr auto token = [](std::string const& text) { return written(parseSsoToken(text).expiration); };
  constexpr auto renewal = [](std::string const& text) {
    return written(
        parseSsoToken(renewedFile("{}", text, std::chrono::sys_days(std::chrono::year(1972) / 2 / 29))).expiration);
  };
  std::string const keys = R"("AccessKeyId": "hush", "SecretAccessKey": "hush")";
  std::string const roleKeys = R"("accessKeyId": "hush", "secretAccessKey": "hush", "sessionToken": "hush")";
  Case const cases[] = {
      {process, R"({"Version": 1, )" + keys + "}", "never"},
      {process, R"({"Version": 1, "Expiration": null, )" + keys + "}", "never"},
      {process, R"({"Version": 1, "Expiration": "1970-01-02T00:00:00+02:00", )" + keys + "}", "79200"},
      {process, R"({"Version": 1, "Expiration": "hush", )" + keys + "}", "\"Expiration\" isn't a time"},
      {process, R"({"Version": "1", )" + keys + "}", "\"Version\" isn't 1"},
      {process, R"({"Version": 1, "AccessKeyId": "hush"})", "\"SecretAccessKey\" is missing"},
      {process, R"({"Version": 1, "AccessKeyId": ["hush"]})", "\"AccessKeyId\" isn't a JSON string"},
      {process, "hush", "the credentials aren't a JSON object"},
      {process, "[\"hush\"]", "the credentials aren't a JSON object"},
      {service, R"({"Code": "Failed", "Message": "hush"})", "the service refused them (Failed)"},
      {service, R"({"Code": "hush 1", "Message": "hush"})", "the service refused them"},
      {role, R"({"roleCredentials": {"expiration": 5999, )" + roleKeys + "}}", "5"},
      {role, R"({"roleCredentials": {"expiration": "5999", )" + roleKeys + "}}", "\"expiration\" isn't a whole number"},
      {role, R"({"roleCredentials": "hush"})", "\"roleCredentials\" is missing"},
      {token, R"({"accessToken": "hush", "expiresAt": "1970-01-01T00:00:09UTC"})", "9"},
      {token, R"({"accessToken": "hush"})", "\"expiresAt\" is missing"},
      {renewal, R"({"accessToken": "hush", "expiresIn": 5})", "68169605"},
      {renewal, R"({"accessToken": "hush", "expiresIn": -5})", "\"expiresIn\" isn't a whole number"},
      {renewal, R"({"accessToken": "hu\nsh", "expiresIn": 5})", "the token of the login contains a control"},
  };
  for (Case const& c : cases) {
    std::string result;
    try {
      result = c.parse(c.text);
    } catch (CredentialsError const& error) {
      result = error.what();
    }
    EXPECT_EQ(result.rfind(c.expected, 0), 0U) << result;
    EXPECT_EQ(result.find("hush"), std::string::npos) << result;
  }
}

TEST(S3Timestamp, IsoTimesOnly) {
  std::pair<char const*, std::optional<std::int64_t>> const cases[] = {
      {"1970-01-01T00:01:40Z", 100000}, {"1970-01-01T00:00:01.999Z", 1999},    {"1970-01-01T02:30:00+02:30", 0},
      {"1969-12-31T23:00:00-01:00", 0}, {"1972-02-29T00:00:00Z", 68169600000}, {"1970-02-29T00:00:00Z", {}},
      {"1970-01-01T24:00:00Z", {}},     {"1970-01-01 00:00:00Z", {}},          {"1970-01-01T00:00:00", {}},
      {"1970-01-01T00:00:00Zx", {}},    {"1970-1-01T00:00:00Z", {}},           {"", {}},
  };
  for (auto const& [text, expected] : cases) {
    auto const time = parseTimestamp(text);
    EXPECT_EQ(time ? std::optional(time->time_since_epoch().count()) : std::nullopt, expected) << text;
  }
  EXPECT_GT(*parseTimestamp("9999-12-31T23:59:59Z"), *parseTimestamp("2300-01-01T00:00:00Z"));
}

TEST(S3CredentialsUrl, PlainHttpStaysWithinTheMachine) {
  using enum UrlSafety;
  for (auto const& [url, expected] : {std::pair("http://127.8.0.1:80/x", safe),
                                      {"http://LOCALHOST/", safe},
                                      {"http://[::1]/", safe},
                                      {"http://169.254.170.23/", safe},
                                      {"http://[fd00:ec2::23]/v1", safe},
                                      {"http://[fe80::1]/", safe},
                                      {"https://example.com/", safe},
                                      {"http://127.0.0.1.example.com/", exposed},
                                      {"http://localhost.example.com/", exposed},
                                      {"http://169.255.170.2/", exposed},
                                      {"http://10.0.0.1/", exposed},
                                      {"http://[2001:db8::1]/", exposed},
                                      {"http://[::ffff:10.0.0.1]/", exposed},
                                      {"http://127.0.0.1@example.com/", malformed},
                                      {"ftp://127.0.0.1/", malformed},
                                      {"/path", malformed}})
    EXPECT_EQ(safetyOf(url), expected) << url;
}

}  // namespace
}  // namespace foundation::storage::s3
