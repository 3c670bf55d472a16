#pragma once

#include <memory>
#include <vector>

#include <curl/curl.h>

#include "foundation/core/threads/mutex.hpp"

namespace foundation::storage::s3 {

struct CloseEasy {
  void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
};
struct CloseMulti {
  void operator()(CURLM* handle) const noexcept { curl_multi_cleanup(handle); }
};

/// A handle for requests, with the connections to servers that it keeps open. Used by one thread at a time.
struct Connection {
  std::unique_ptr<CURLM, CloseMulti> multi{curl_multi_init()};
  std::unique_ptr<CURL, CloseEasy> easy{curl_easy_init()};
};

/// The idle connections of the process. Safe to use from several threads at once.
class ConnectionPool {
 public:
  /// The process's pool. Initialises libcurl at the first call; throws `std::bad_alloc` if that fails.
  static ConnectionPool& instance();

  /// An idle connection, or else a new one. Throws `std::bad_alloc`.
  std::unique_ptr<Connection> acquire();

  /// Makes the connection available again.
  void release(std::unique_ptr<Connection> connection);

 private:
  core::threads::Mutex mutex_;
  std::vector<std::unique_ptr<Connection>> idle_ KORVAN_GUARDED_BY(mutex_);
};

}  // namespace foundation::storage::s3
