#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/core/threads/mutex.hpp"
#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/list_page.hpp"
#include "foundation/storage/s3/retry.hpp"
#include "foundation/storage/s3/transport.hpp"
#include "foundation/storage/s3/url.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"

namespace foundation::storage::s3 {

/// The parameters of a ListObjectsV2 request. Fields that are empty or 0 aren't sent.
struct ListRequest {
  std::string bucket = {};
  std::string prefix = {};
  std::string startAfter = {};
  std::string continuationToken = {};
  bool delimited = false;  ///< roll up the keys below the next "/" into common prefixes
  unsigned maximumKeys = 0;
  bool withFacts = false;  ///< not sent: whether `ListPage::facts` is wanted
};

/// A client of the store that the configuration describes. Safe to use from several threads at once.
class Client {
 public:
  /// Requests go through `transport`; `clock` must outlive the client.
  Client(Configuration configuration, std::unique_ptr<Transport> transport, Clock& clock);

  /// One page of a listing, checked by `check`: one request, more if it has to be retried, and one more if the bucket
  /// turns out to be in another region, which is remembered for the bucket. Throws `vfs::Exception` with the location
  /// for every failure and for a malformed page, and `Quindarel::System::InterruptException`.
  ListPage list(ListRequest const& request, PageCheck& check, vfs::AbsoluteIRI const& location);

  /// One page of the account's buckets, as keys: as `list`, from the continuation token on if there is one. Without
  /// credentials, which say whose buckets are wanted, it throws `vfs::Exception` and makes no request.
  ListPage listBuckets(std::string const& continuationToken, PageCheck& check, vfs::AbsoluteIRI const& location);

 private:
  using ParsePage = std::function<ListPage(std::string_view)>;

  /// The page of the bucket, or of the service if the name is empty.
  ListPage getPage(std::string const& bucket, Query query, ParsePage const& parse, PageCheck& check,
                   vfs::AbsoluteIRI const& location);

  /// The outcome of the request with its retries, behind a circuit breaker: a search of many folders shouldn't wait for
  /// a dead store once for each of them. The circuit opens after one request that found the store unreachable, or two
  /// in a row without a response. For twice the time that the last one took, every request then fails at once with that
  /// outcome.
  RequestOutcome get(StoreRequest const& request, ResponseCheck const& check);

  /// The region to sign a request for the bucket for: the configured one, unless the store has named another.
  std::string regionOf(std::string const& bucket);
  void rememberRegion(std::string const& bucket, std::string const& region);

  Configuration configuration_;
  RetryPolicy policy_;
  std::unique_ptr<Transport> transport_;
  Clock& clock_;

  core::threads::Mutex circuitMutex_;
  unsigned failuresInARow_ KORVAN_GUARDED_BY(circuitMutex_) = 0;  // requests without a response
  // The outcome of every request while the circuit is open.
  std::optional<RequestOutcome> openCircuit_ KORVAN_GUARDED_BY(circuitMutex_);
  std::chrono::milliseconds circuitOpenUntil_ KORVAN_GUARDED_BY(circuitMutex_){0};

  core::threads::Mutex regionMutex_;
  std::map<std::string, std::string> regions_ KORVAN_GUARDED_BY(regionMutex_);  // by bucket, where it isn't the usual
};

}  // namespace foundation::storage::s3
