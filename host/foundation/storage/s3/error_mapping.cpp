#include "foundation/storage/s3/error_mapping.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include <pugixml.hpp>

#include "foundation/core/text/bytes.hpp"
#include "foundation/core/text/escape.hpp"
#include "foundation/core/text/utf16.hpp"
#include "foundation/storage/s3/redaction.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr std::size_t longestQuote = 300;       // UTF-16 units
constexpr std::size_t longestRedacted = 65536;  // bytes; what follows is never quoted

/// What the body and the headers of an error response say.
struct ErrorBody {
  std::string code;
  std::string message;
  std::string requestId;
  std::string region;
};

ErrorBody parseErrorBody(Response const& response) {
  pugi::xml_document document;
  ErrorBody error;
  if (document.load_buffer(response.body.data(), response.body.size())) {
    // Some stores nest <Error> in a list of errors.
    pugi::xml_node const node =
        document.find_node([](pugi::xml_node each) { return each.name() == std::string_view("Error"); });
    error.code = node.child_value("Code");
    error.message = node.child_value("Message");
    error.requestId = node.child_value("RequestId");
    error.region = node.child_value("Region");
  } else if (response.body.find('<') == std::string::npos) {
    error.message = response.body;
  }
  if (!response.requestId.empty()) error.requestId = response.requestId;
  if (!response.region.empty()) error.region = response.region;
  return error;
}

bool isOneOf(std::string_view code, std::initializer_list<std::string_view> codes) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

vfs::ErrorCode errorCodeOf(long status, std::string_view code) {
  if (isOneOf(code, {"NoSuchBucket", "NoSuchKey"})) return vfs::ErrorCode::notFound;
  if (status == 401 || status == 403 ||
      isOneOf(code, {"AccessDenied", "ExpiredToken", "InvalidAccessKeyId", "InvalidToken", "SignatureDoesNotMatch",
                     "TokenRefreshRequired"}))
    return vfs::ErrorCode::permissionDenied;
  return vfs::ErrorCode::other;
}

Secrets secretsOf(Configuration const& configuration) {
  Secrets secrets = configuration.credentials ? configuration.credentials->secrets() : Secrets();
  addUserInformation(secrets, configuration.proxies);
  return secrets;
}

// A store's words as part of a message: without secrets, on one line, shortened if need be. Line breaks and tabs, which
// only lay out a body, become spaces; other controls are escaped here too, as not every host escapes what it prints.
std::string quoted(std::string text, Secrets const& secrets) {
  if (text.size() > longestRedacted) text.resize(longestRedacted);
  redact(text, secrets);
  for (char& c : text)
    if (c == '\n' || c == '\r' || c == '\t') c = ' ';
  text.erase(0, text.find_first_not_of(' '));
  text.erase(text.find_last_not_of(' ') + 1);
  std::u16string characters = core::text::fromBytes(text);
  if (characters.size() > longestQuote) {
    characters.resize(longestQuote - (core::text::isPairAt(characters, longestQuote - 1) ? 1 : 0));
    characters += u"...";
  }
  std::u16string line;
  core::text::appendOneLine(line, characters);
  return core::text::toBytesLossy(line);
}

std::string requestIdSuffix(std::string const& requestId, Secrets const& secrets) {
  return requestId.empty() ? std::string() : " (request id " + quoted(requestId, secrets) + ')';
}

std::string attemptSummary(RequestOutcome const& outcome) {
  if (outcome.attempts <= 1) return {};
  auto const tenths = (outcome.elapsed.count() + 50) / 100;
  return " (tried " + std::to_string(outcome.attempts) + " times in " + std::to_string(tenths / 10) + '.' +
         std::to_string(tenths % 10) + " s)";
}

std::string responseText(Response const& response, ErrorBody const& error, Secrets const& secrets) {
  std::string text = "HTTP " + std::to_string(response.status);
  if (!error.code.empty()) text += ' ' + quoted(error.code, secrets);
  if (std::string const message = quoted(error.message, secrets); !message.empty()) text += ": " + message;
  return text;
}

}  // namespace

void addUserInformation(Secrets& secrets, std::vector<std::string> const& proxies) {
  for (std::string const& proxy : proxies)
    for (std::string& secret : userInformation(proxy)) secrets.push_back(std::move(secret));
}

std::string failureReason(RequestOutcome const& outcome, Secrets const& secrets) {
  if (auto const* const failure = std::get_if<Failure>(&outcome.last))
    return quoted(failure->reason, secrets) + attemptSummary(outcome);
  Response const& response = std::get<Response>(outcome.last);
  ErrorBody const error = parseErrorBody(response);
  return responseText(response, error, secrets) + requestIdSuffix(error.requestId, secrets) + attemptSummary(outcome);
}

vfs::Exception exceptionFor(RequestOutcome const& outcome, Configuration const& configuration,
                            vfs::AbsoluteIRI const& location) {
  Secrets const secrets = secretsOf(configuration);
  auto const* const response = std::get_if<Response>(&outcome.last);
  if (response == nullptr) return vfs::Exception(vfs::ErrorCode::other, location, failureReason(outcome, secrets));

  ErrorBody const error = parseErrorBody(*response);
  vfs::ErrorCode const code = errorCodeOf(response->status, error.code);
  std::string reason = responseText(*response, error, secrets);
  if (!error.region.empty() && error.region != configuration.region)
    reason += "; the bucket is in region \"" + quoted(error.region, secrets) + "\", not \"" + configuration.region +
              "\": set AWS_REGION";
  bool const isSigned = configuration.credentials && configuration.credentials->latest();
  if (!isSigned && response->status >= 400 && response->status < 500 && code != vfs::ErrorCode::notFound)
    reason += configuration.noSignRequest ? "; the request was not signed"
                                          : "; the request was not signed because no credentials were found";
  return vfs::Exception(code, location, reason + requestIdSuffix(error.requestId, secrets) + attemptSummary(outcome));
}

std::string malformedReason(Response const& response, std::string const& fault) {
  std::string const reason = "malformed response from the store: " + fault;
  return response.requestId.empty() ? reason : reason + " (request id " + response.requestId + ')';
}

std::optional<std::string> regionNamedBy(RequestOutcome const& outcome) {
  auto const* const response = std::get_if<Response>(&outcome.last);
  bool const isRedirection = response != nullptr && response->status >= 300 && response->status < 400;
  if (!isRedirection && (response == nullptr || response->status != 400)) return std::nullopt;
  std::string region = parseErrorBody(*response).region;
  if (region.empty() || !isRegion(region)) return std::nullopt;
  return region;
}

}  // namespace foundation::storage::s3
