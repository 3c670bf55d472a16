#pragma once

#include <cstddef>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include <curl/curl.h>

#include "foundation/storage/s3/connection_pool.hpp"
#include "foundation/storage/s3/transport.hpp"

namespace foundation::storage::s3 {

/// A request in progress on a connection, and the response as far as it has been received.
class Transfer {
 public:
  /// The most bytes that a response's body may have.
  static constexpr std::size_t maximumBodyBytes = std::size_t{32} << 20;

  /// Resets the connection's options. The connection must outlive the transfer.
  explicit Transfer(Connection& connection);

  /// Abandons the request if it is in progress: waits neither for the server nor for a host name look-up.
  ~Transfer();

  Transfer(Transfer const&) = delete;
  Transfer& operator=(Transfer const&) = delete;

  /// Sets an option of libcurl. Throws `std::bad_alloc`.
  template <class Value>
  void set(CURLoption option, Value value) {
    if (curl_easy_setopt(easy(), option, value) == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
  }

  /// Runs to the end of the response. Throws `Quindarel::System::InterruptException` within 50 ms of an interrupt, and
  /// `std::bad_alloc`.
  CURLcode run();

  /// The response, after `run` has returned `CURLE_OK`.
  Response takeResponse();

  /// The failure, after `run` has returned another code.
  Failure failure(CURLcode code) const;

  /// The size of the body received so far.
  std::size_t receivedBytes() const noexcept { return receivedBytes_; }

 private:
  CURL* easy() const noexcept { return connection_.easy.get(); }

  template <class Receive>
  std::size_t guarded(std::size_t count, Receive receive) noexcept;
  static std::size_t onBody(char* data, std::size_t, std::size_t count, void* self);
  static std::size_t onHeader(char* data, std::size_t, std::size_t count, void* self);
  void noteHeader(std::string_view line);

  bool connected() const;
  bool requestSent() const;
  Failure::Kind failureKind(CURLcode code) const;
  std::string errorText(CURLcode code) const;

  Connection& connection_;
  Response response_;
  std::size_t receivedBytes_ = 0;
  bool tooLarge_ = false;
  std::exception_ptr exception_;
  char error_[CURL_ERROR_SIZE] = "";
};

}  // namespace foundation::storage::s3
