#include "foundation/storage/s3/connection_pool.hpp"

#include <new>
#include <utility>

namespace foundation::storage::s3 {

ConnectionPool& ConnectionPool::instance() {
  // libcurl is initialised first, so that at exit the pool closes its connections before the TLS library shuts down.
  static CURLcode const started = curl_global_init(CURL_GLOBAL_DEFAULT);
  static ConnectionPool pool;
  if (started != CURLE_OK) throw std::bad_alloc();
  return pool;
}

std::unique_ptr<Connection> ConnectionPool::acquire() {
  {
    core::threads::MutexLock const lock(mutex_);
    if (!idle_.empty()) {
      auto connection = std::move(idle_.back());
      idle_.pop_back();
      return connection;
    }
  }
  auto connection = std::make_unique<Connection>();
  if (!connection->multi || !connection->easy) throw std::bad_alloc();
  return connection;
}

void ConnectionPool::release(std::unique_ptr<Connection> connection) {
  core::threads::MutexLock const lock(mutex_);
  idle_.push_back(std::move(connection));
}

}  // namespace foundation::storage::s3
