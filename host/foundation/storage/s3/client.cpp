#include "foundation/storage/s3/client.hpp"

#include <utility>

#include "foundation/storage/s3/error_mapping.hpp"
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
  Result const result = ask(url);
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

Result Store::ask(std::string const& url) {
  {
    std::lock_guard const lock(silenceMutex_);
    if (silence_ && clock_.now() < silenceEnd_) return *silence_;
  }
  Result result = getWithRetries(*transport_, clock_, policy_, url);
  std::lock_guard const lock(silenceMutex_);
  auto const* const failure = std::get_if<Failure>(&result.outcome);
  if (failure == nullptr || failure->kind == Failure::Kind::lasting) {
    silence_.reset();
    unanswered_ = 0;
  } else if (++unanswered_ >= (failure->kind == Failure::Kind::unreachable ? 1 : 2)) {
    silence_ = result;
    silenceEnd_ = clock_.now() + 2 * result.spent;
  }
  return result;
}

}  // namespace foundation::storage::s3
