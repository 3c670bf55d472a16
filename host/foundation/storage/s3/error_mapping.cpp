#include "foundation/storage/s3/error_mapping.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>

#include <pugixml.hpp>

namespace foundation::storage::s3 {
namespace {

constexpr std::size_t longestQuote = 300;

/// What the body of an answer that is no success says.
struct Complaint {
  std::string code;
  std::string message;
  std::string requestId;
  std::string region;
};

Complaint complaintOf(Answer const& answer) {
  pugi::xml_document document;
  Complaint complaint;
  if (document.load_buffer(answer.body.data(), answer.body.size())) {
    // Some stores put <Error> into a list of errors.
    pugi::xml_node const error =
        document.find_node([](pugi::xml_node node) { return node.name() == std::string_view("Error"); });
    complaint.code = error.child_value("Code");
    complaint.message = error.child_value("Message");
    complaint.requestId = error.child_value("RequestId");
    complaint.region = error.child_value("Region");
  } else if (answer.body.find('<') == std::string::npos) {
    complaint.message = answer.body;
  }
  if (!answer.requestId.empty()) complaint.requestId = answer.requestId;
  if (!answer.region.empty()) complaint.region = answer.region;
  return complaint;
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

void blotOut(std::string& text, std::string const& secret) {
  if (secret.empty()) return;
  for (auto at = text.find(secret); at != std::string::npos; at = text.find(secret, at + 3))
    text.replace(at, secret.size(), "***");
}

// A store's words as part of one line: without secrets, blanks for controls, and no more than a line's worth.
std::string quoted(std::string text, Configuration const& configuration) {
  if (configuration.credentials) {
    blotOut(text, configuration.credentials->secret);
    blotOut(text, configuration.credentials->sessionToken);
  }
  for (char& c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  text.erase(0, text.find_first_not_of(' '));
  text.erase(text.find_last_not_of(' ') + 1);
  if (text.size() <= longestQuote) return text;
  std::size_t end = longestQuote;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;  // no half character
  return text.substr(0, end) + "...";
}

std::string requestIdSuffix(std::string const& requestId, Configuration const& configuration) {
  return requestId.empty() ? std::string() : " (request id " + quoted(requestId, configuration) + ')';
}

std::string effort(Result const& result) {
  if (result.attempts <= 1) return {};
  auto const tenths = (result.spent.count() + 50) / 100;
  return " (tried " + std::to_string(result.attempts) + " times in " + std::to_string(tenths / 10) + '.' +
         std::to_string(tenths % 10) + " s)";
}

}  // namespace

vfs::Exception exceptionOfResult(Result const& result, Configuration const& configuration,
                                 vfs::AbsoluteIRI const& location) {
  if (auto const* const failure = std::get_if<Failure>(&result.outcome))
    return vfs::Exception(vfs::ErrorCode::other, location, quoted(failure->reason, configuration) + effort(result));

  Answer const& answer = std::get<Answer>(result.outcome);
  Complaint const complaint = complaintOf(answer);
  vfs::ErrorCode const code = errorCodeOf(answer.status, complaint.code);
  std::string reason = "HTTP " + std::to_string(answer.status);
  if (!complaint.code.empty()) reason += ' ' + quoted(complaint.code, configuration);
  if (std::string const message = quoted(complaint.message, configuration); !message.empty()) reason += ": " + message;
  if (!complaint.region.empty() && complaint.region != configuration.region)
    reason += "; the store says that the region is \"" + quoted(complaint.region, configuration) +
              "\", the request was for \"" + configuration.region + "\" (see AWS_REGION)";
  if (!configuration.credentials && answer.status >= 400 && answer.status < 500 && code != vfs::ErrorCode::notFound)
    reason += "; the request was not signed, as no credentials were found";
  reason += requestIdSuffix(complaint.requestId, configuration);
  return vfs::Exception(code, location, reason + effort(result));
}

vfs::Exception exceptionOfBadAnswer(Answer const& answer, std::string const& fault, Configuration const& configuration,
                                    vfs::AbsoluteIRI const& location) {
  return vfs::Exception(
      vfs::ErrorCode::other, location,
      "the store's answer makes no sense: " + fault + requestIdSuffix(answer.requestId, configuration));
}

}  // namespace foundation::storage::s3
