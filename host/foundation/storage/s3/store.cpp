#include "foundation/storage/s3/store.hpp"

#include <utility>

#include "foundation/storage/s3/answer_error.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr long ok = 200;

Query queryOf(ListRequest const& request) {
  // Names with control characters come only encoded.
  Query query{{"list-type", "2"}, {"encoding-type", "url"}, {"prefix", request.prefix}};
  if (request.delimited) query.emplace_back("delimiter", "/");
  if (!request.startAfter.empty()) query.emplace_back("start-after", request.startAfter);
  if (!request.continuationToken.empty()) query.emplace_back("continuation-token", request.continuationToken);
  if (request.maximumKeys != 0) query.emplace_back("max-keys", std::to_string(request.maximumKeys));
  return query;
}

}  // namespace

Store::Store(Configuration configuration, std::unique_ptr<Transport> transport, Clock& clock)
    : configuration_(std::move(configuration)), transport_(std::move(transport)), clock_(clock) {
  if (configuration_.maximumAttempts != 0) policy_.attempts = configuration_.maximumAttempts;
}

ListPage Store::list(ListRequest const& request, PageCheck& check, vfs::AbsoluteIRI const& location) {
  std::string const url = bucketUrl(configuration_, request.bucket) + '?' + canonicalQuery(queryOf(request));
  Result const result = getWithRetries(*transport_, clock_, policy_, url);
  auto const* const answer = std::get_if<Answer>(&result.outcome);
  if (answer == nullptr || answer->status != ok) throw exceptionOfResult(result, configuration_, location);
  try {
    ListPage page = parseListPage(answer->body);
    check.accept(page);
    return page;
  } catch (BadPage const& fault) {
    throw exceptionOfBadAnswer(*answer, fault.what(), configuration_, location);
  }
}

}  // namespace foundation::storage::s3
