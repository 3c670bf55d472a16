#include "foundation/storage/s3/list_page.hpp"

#include <algorithm>
#include <optional>

#include "foundation/storage/s3/url.hpp"
#include "fuzz/input.hpp"

namespace korvan::fuzz {
namespace {

namespace s3 = foundation::storage::s3;

std::optional<s3::ListPage> parsed(std::string const& body) {
  try {
    return s3::parseListPage(body, true);
  } catch (s3::MalformedPage const&) {
    return std::nullopt;
  }
}

bool isAccepted(s3::PageCheck& check, s3::ListPage const& page) {
  try {
    check.accept(page);
    return true;
  } catch (s3::MalformedPage const&) {
    return false;
  }
}

std::string percentEncoded(std::string const& bytes) {
  std::string parameter = s3::canonicalQuery({{bytes, ""}});
  parameter.pop_back();  // the "=" before the empty value
  return parameter;
}

// The page as a store would send it.
std::string bodyOf(s3::ListPage const& page) {
  std::string body = "<ListBucketResult><EncodingType>url</EncodingType><IsTruncated>";
  body += page.truncated ? "true" : "false";
  body += "</IsTruncated><NextContinuationToken>" + percentEncoded(page.continuationToken);
  body += "</NextContinuationToken>";
  for (auto const& key : page.keys) body += "<Contents><Key>" + percentEncoded(key) + "</Key></Contents>";
  for (auto const& prefix : page.commonPrefixes)
    body += "<CommonPrefixes><Prefix>" + percentEncoded(prefix) + "</Prefix></CommonPrefixes>";
  return body + "</ListBucketResult>";
}

s3::ListPage takePage(FuzzedDataProvider& input) {
  s3::ListPage page;
  for (unsigned entries = input.ConsumeIntegralInRange(0U, 4U); entries > 0; --entries) {
    std::string const name = takeBytes(input, 4);
    if (!name.empty()) (input.ConsumeBool() ? page.keys : page.commonPrefixes).push_back(name);
  }
  page.truncated = input.ConsumeBool();
  page.continuationToken = percentEncoded(takeBytes(input, 2));
  return page;
}

// Accepted pages contain only what was requested, and each gets further than the one before, unless the store is known
// not to list in byte order.
void checkListing(FuzzedDataProvider& input) {
  std::string const prefix = takeBytes(input, 2);
  bool const delimited = input.ConsumeBool();
  s3::PageCheck check(prefix, delimited);
  std::string last;
  while (input.remaining_bytes() > 0) {
    s3::ListPage const page = takePage(input);
    auto const read = parsed(bodyOf(page));
    require(read && read->keys == page.keys && read->commonPrefixes == page.commonPrefixes);
    require(read->truncated == page.truncated);
    if (!isAccepted(check, page)) return;
    std::string greatest = last;
    for (auto const* const names : {&page.keys, &page.commonPrefixes}) {
      for (auto const& name : *names) {
        require(name.starts_with(prefix) && (name >= last || !check.isOrdered()));
        auto const slash = name.find('/', prefix.size());
        bool const isPrefix = names == &page.commonPrefixes;
        require(isPrefix ? delimited && slash + 1 == name.size() : !delimited || slash == std::string::npos);
        greatest = std::max(greatest, name);
      }
    }
    require(greatest > last || !check.isOrdered() || (page.keys.empty() && page.commonPrefixes.empty()));
    last = greatest;
  }
}

}  // namespace
}  // namespace korvan::fuzz

/// Any body is either read or refused, a well-formed page is read as it was written, and accepted pages form one
/// listing.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  using namespace korvan::fuzz;
  FuzzedDataProvider input(data, size);
  if (input.ConsumeBool()) {
    checkListing(input);
    return 0;
  }
  if (auto const page = parsed(input.ConsumeRemainingBytesAsString())) {
    for (auto const* const names : {&page->keys, &page->commonPrefixes})
      for (auto const& name : *names) require(!name.empty());
  }
  return 0;
}
