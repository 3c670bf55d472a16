#include "foundation/storage/s3/client.hpp"

#include <algorithm>
#include <utility>

#include "foundation/storage/s3/bucket_list.hpp"
#include "foundation/storage/s3/error_mapping.hpp"

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
  // A request that timed out is made once more.
  policy_.totalTime = std::max<std::chrono::milliseconds>(
      policy_.totalTime, std::chrono::seconds(2) * configuration_.connection.readTimeout);
}

ListPage Client::list(ListRequest const& request, PageCheck& check, vfs::AbsoluteIRI const& location) {
  auto const parse = [&](std::string_view body) { return parseListPage(body, request.withFacts); };
  return getPage(request.bucket, queryOf(request), parse, check, location);
}

ListPage Client::listBuckets(std::string const& continuationToken, PageCheck& check, vfs::AbsoluteIRI const& location) {
  try {
    if (!configuration_.credentials || !configuration_.credentials->current()) {
      throw vfs::Exception(vfs::ErrorCode::permissionDenied, location,
                           configuration_.noSignRequest
                               ? "credentials are needed to list the buckets of an account, but requests aren't signed"
                               : "credentials are needed to list the buckets of an account, but none were found");
    }
  } catch (CredentialsError const& error) {
    throw vfs::Exception(vfs::ErrorCode::other, location, error.what());
  }
  Query query;
  if (!continuationToken.empty()) query.emplace_back("continuation-token", continuationToken);
  return getPage({}, std::move(query), parseBucketList, check, location);
}

ListPage Client::getPage(std::string const& bucket, Query query, ParsePage const& parse, PageCheck& check,
                         vfs::AbsoluteIRI const& location) {
  std::string const parameters = query.empty() ? std::string() : '?' + canonicalQuery(std::move(query));
  ListPage page;
  auto const getFrom = [&](std::string const& region) {
    return get({bucketUrl(configuration_, region, bucket) + parameters, region}, [&](Response const& response) {
      try {
        page = parse(response.body);
        return std::optional<std::string>();
      } catch (MalformedPage const& error) {
        return std::optional(malformedReason(response, error.what()));
      }
    });
  };
  std::string region = regionOf(bucket);
  RequestOutcome outcome;
  try {
    outcome = getFrom(region);
    if (auto named = regionNamedBy(outcome); named && *named != region) {
      region = *std::move(named);
      outcome = getFrom(region);
    }
  } catch (CredentialsError const& error) {
    throw vfs::Exception(vfs::ErrorCode::other, location, error.what());
  }
  auto const* const response = std::get_if<Response>(&outcome.last);
  try {
    if (response != nullptr && response->status == ok) {
      if (region != configuration_.region) rememberRegion(bucket, region);
      check.accept(page);
      return page;
    }
  } catch (MalformedPage const& error) {
    outcome.last = Failure{Failure::Kind::permanent, malformedReason(*response, error.what())};
  }
  Configuration used = configuration_;
  used.region = region;
  throw exceptionFor(outcome, used, location);
}

std::string Client::regionOf(std::string const& bucket) {
  core::threads::MutexLock const lock(regionMutex_);
  auto const found = regions_.find(bucket);
  return found == regions_.end() ? configuration_.region : found->second;
}

void Client::rememberRegion(std::string const& bucket, std::string const& region) {
  core::threads::MutexLock const lock(regionMutex_);
  regions_.insert_or_assign(bucket, region);
}

RequestOutcome Client::get(StoreRequest const& request, ResponseCheck const& check) {
  {
    core::threads::MutexLock const lock(circuitMutex_);
    if (openCircuit_ && clock_.now() < circuitOpenUntil_) return *openCircuit_;
  }
  RequestOutcome outcome = getWithRetries(*transport_, clock_, policy_, request, check);
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
