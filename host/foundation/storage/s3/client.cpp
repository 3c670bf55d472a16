#include "foundation/storage/s3/client.hpp"

#include <utility>

#include "foundation/storage/s3/error_mapping.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr long ok = 200;

Query queryOf(ListRequest const& request) {
  // Without encoding-type=url XML couldn't carry keys with control characters.
  Query query{{"list-type", "2"}, {"encoding-type", "url"}, {"prefix", request.prefix}};
  if (request.delimited) query.emplace_back("delimiter", "/");
  if (!request.startAfter.empty() && request.continuationToken.empty())
    query.emplace_back("start-after", request.startAfter);
  if (!request.continuationToken.empty()) query.emplace_back("continuation-token", request.continuationToken);
  if (request.maximumKeys != 0) query.emplace_back("max-keys", std::to_string(request.maximumKeys));
  return query;
}

}  // namespace

Client::Client(Configuration configuration, std::unique_ptr<Transport> transport, Clock& clock)
    : configuration_(std::move(configuration)), transport_(std::move(transport)), clock_(clock) {
  if (configuration_.maximumAttempts != 0) policy_.maximumAttempts = configuration_.maximumAttempts;
}

ListPage Client::list(ListRequest const& request, PageCheck& check, vfs::AbsoluteIRI const& location) {
  RequestOutcome const outcome =
      get(bucketUrl(configuration_, request.bucket) + '?' + canonicalQuery(queryOf(request)));
  auto const* const response = std::get_if<Response>(&outcome.last);
  if (response == nullptr || response->status != ok) throw exceptionFor(outcome, configuration_, location);
  try {
    ListPage page = parseListPage(response->body);
    check.accept(page);
    return page;
  } catch (MalformedPage const& page) {
    throw malformedResponseException(*response, page.what(), configuration_, location);
  }
}

RequestOutcome Client::get(std::string const& url) {
  {
    core::threads::MutexLock const lock(circuitMutex_);
    if (openCircuit_ && clock_.now() < circuitOpenUntil_) return *openCircuit_;
  }
  RequestOutcome outcome = getWithRetries(*transport_, clock_, policy_, url);
  core::threads::MutexLock const lock(circuitMutex_);
  auto const* const failure = std::get_if<Failure>(&outcome.last);
  if (failure == nullptr || failure->kind == Failure::Kind::permanent) {
    openCircuit_.reset();
    failuresInARow_ = 0;
  } else if (++failuresInARow_ >= (failure->kind == Failure::Kind::unreachable ? 1 : 2)) {
    openCircuit_ = outcome;
    circuitOpenUntil_ = clock_.now() + 2 * outcome.elapsed;
  }
  return outcome;
}

}  // namespace foundation::storage::s3
