#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/list_page.hpp"
#include "foundation/storage/s3/retry.hpp"
#include "foundation/storage/s3/transport.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"

namespace foundation::storage::s3 {

/// What is asked of a bucket's listing. Fields that are empty or 0 aren't sent.
struct ListRequest {
  std::string bucket = {};
  std::string prefix = {};
  std::string startAfter = {};
  std::string continuationToken = {};
  bool delimited = false;  ///< roll up what is below the next "/"
  unsigned maximumKeys = 0;
};

/// One store, as the configuration tells. Usable from several threads at once.
class Store {
 public:
  /// The store of the configuration; requests go through `transport`.
  Store(Configuration configuration, std::unique_ptr<Transport> transport, Clock& clock);

  /// A page of a listing, held to what was asked and to the pages that `check` has seen; one request, more where it has
  /// to be tried again. Throws `vfs::Exception` with the location for every failure and for an answer that can't be
  /// that page, `Quindarel::System::InterruptException`.
  ListPage list(ListRequest const& request, PageCheck& check, vfs::AbsoluteIRI const& location);

 private:
  /// The result of the request with its repetitions. A store that has gone fails a search of many folders once, not for
  /// each of them anew: for twice the time that it was waited for in vain, the same failure answers every request.
  Result ask(std::string const& url);

  Configuration configuration_;
  RetryPolicy policy_;
  std::unique_ptr<Transport> transport_;
  Clock& clock_;

  std::mutex silenceMutex_;  // guards what follows
  unsigned unanswered_ = 0;  // requests in a row that got no answer at all
  std::optional<Result> silence_;
  std::chrono::milliseconds silenceEnd_{0};
};

}  // namespace foundation::storage::s3
