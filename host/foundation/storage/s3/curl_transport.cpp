#include "foundation/storage/s3/curl_transport.hpp"

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include <curl/curl.h>

#include "foundation/core/text/ascii.hpp"
#include "foundation/core/threads/mutex.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr std::size_t maximumResponseBytes = std::size_t{32} << 20;
constexpr long connectTimeoutMilliseconds = 5000;
constexpr long idleTimeoutSeconds = 10;
constexpr int pollMilliseconds = 40;  // an interrupt must be noticed within 50 ms

struct CloseEasy {
  void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
};
struct CloseMulti {
  void operator()(CURLM* handle) const noexcept { curl_multi_cleanup(handle); }
};
struct FreeList {
  void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

HeaderList append(HeaderList headers, std::string const& header) {
  curl_slist* const longer = curl_slist_append(headers.get(), header.c_str());
  if (longer == nullptr) throw std::bad_alloc();
  (void)headers.release();  // part of the longer list
  return HeaderList(longer);
}

/// A handle for requests, with the connections that it keeps open. Used by one thread at a time.
struct Connection {
  std::unique_ptr<CURLM, CloseMulti> multi{curl_multi_init()};
  std::unique_ptr<CURL, CloseEasy> easy{curl_easy_init()};
};

/// The idle connections of the process.
class ConnectionPool {
 public:
  static ConnectionPool& instance() {
    // libcurl is initialised first, so that at exit the pool closes its connections before the TLS library shuts down.
    static CURLcode const started = curl_global_init(CURL_GLOBAL_DEFAULT);
    static ConnectionPool pool;
    if (started != CURLE_OK) throw std::bad_alloc();
    return pool;
  }

  std::unique_ptr<Connection> acquire() {
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

  void release(std::unique_ptr<Connection> connection) {
    core::threads::MutexLock const lock(mutex_);
    idle_.push_back(std::move(connection));
  }

 private:
  core::threads::Mutex mutex_;
  std::vector<std::unique_ptr<Connection>> idle_ KORVAN_GUARDED_BY(mutex_);
};

/// A request in progress on a connection, and the response as far as it has been received.
class Transfer {
 public:
  explicit Transfer(Connection& connection) : connection_(connection) {
    curl_easy_reset(easy());
    set(CURLOPT_WRITEFUNCTION, &Transfer::onBody);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_HEADERFUNCTION, &Transfer::onHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_ERRORBUFFER, error_);
  }

  ~Transfer() {
    // Otherwise libcurl would wait for a host name look-up that is still running.
    if (inProgress_) curl_easy_setopt(easy(), CURLOPT_QUICK_EXIT, 1L);
    curl_multi_remove_handle(connection_.multi.get(), easy());
    curl_easy_reset(easy());
  }

  Transfer(Transfer const&) = delete;
  Transfer& operator=(Transfer const&) = delete;

  template <class Value>
  void set(CURLoption option, Value value) {
    if (curl_easy_setopt(easy(), option, value) == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
  }

  /// Runs to the end of the response, checking for an interrupt regularly. Rethrows a callback's exception.
  CURLcode run() {
    inProgress_ = true;
    if (curl_multi_add_handle(connection_.multi.get(), easy()) != CURLM_OK) return CURLE_FAILED_INIT;
    for (int running = 1;;) {
      utThrowIfInterruptPending();
      if (curl_multi_perform(connection_.multi.get(), &running) != CURLM_OK) return CURLE_FAILED_INIT;
      if (running == 0) break;
      curl_multi_poll(connection_.multi.get(), nullptr, 0, pollMilliseconds, nullptr);
    }
    inProgress_ = false;
    if (exception_) std::rethrow_exception(exception_);
    int left = 0;
    CURLMsg const* const message = curl_multi_info_read(connection_.multi.get(), &left);
    return message != nullptr && message->msg == CURLMSG_DONE ? message->data.result : CURLE_FAILED_INIT;
  }

  Response takeResponse() {
    curl_easy_getinfo(easy(), CURLINFO_RESPONSE_CODE, &response_.status);
    curl_off_t seconds = 0;
    if (curl_easy_getinfo(easy(), CURLINFO_RETRY_AFTER, &seconds) == CURLE_OK && seconds > 0)
      response_.retryAfter = std::chrono::seconds(seconds);
    return std::move(response_);
  }

  std::string errorText(CURLcode code) const {
    if (tooLarge_) return "the response is larger than 32 MiB";
    return error_[0] != '\0' ? error_ : curl_easy_strerror(code);
  }

  bool connected() const {
    char* address = nullptr;
    return curl_easy_getinfo(easy(), CURLINFO_PRIMARY_IP, &address) == CURLE_OK && address != nullptr &&
           *address != '\0';
  }

  std::size_t receivedBytes() const noexcept { return receivedBytes_; }

 private:
  CURL* easy() const noexcept { return connection_.easy.get(); }

  // An exception must not pass through libcurl: a callback stores it and ends the transfer by returning 0.
  template <class Receive>
  std::size_t guarded(std::size_t count, Receive receive) noexcept {
    try {
      return receive() ? count : 0;
    } catch (...) {
      exception_ = std::current_exception();
      return 0;
    }
  }

  static std::size_t onBody(char* data, std::size_t, std::size_t count, void* self) {
    auto& transfer = *static_cast<Transfer*>(self);
    return transfer.guarded(count, [&] {
      transfer.receivedBytes_ += count;
      transfer.tooLarge_ = transfer.receivedBytes_ > maximumResponseBytes;
      if (!transfer.tooLarge_) transfer.response_.body.append(data, count);
      return !transfer.tooLarge_;
    });
  }

  static std::size_t onHeader(char* data, std::size_t, std::size_t count, void* self) {
    auto& transfer = *static_cast<Transfer*>(self);
    return transfer.guarded(count, [&] {
      transfer.noteHeader(std::string_view(data, count));
      return true;
    });
  }

  void noteHeader(std::string_view line) {
    auto const colon = line.find(':');
    if (colon == std::string_view::npos) return;
    std::string const name = core::text::lowerCase(line.substr(0, colon));
    auto const first = line.find_first_not_of(" \t", colon + 1);
    auto const last = line.find_last_not_of(" \t\r\n");
    if (first == std::string_view::npos || last < first) return;
    std::string_view const value = line.substr(first, last + 1 - first);
    if (name == "x-amz-request-id" || (name == "x-trans-id" && response_.requestId.empty()))
      response_.requestId = value;
    else if (name == "x-amz-bucket-region")
      response_.region = value;
  }

  Connection& connection_;
  Response response_;
  std::size_t receivedBytes_ = 0;
  bool inProgress_ = false;
  bool tooLarge_ = false;
  std::exception_ptr exception_;
  char error_[CURL_ERROR_SIZE] = "";
};

Failure::Kind failureKind(CURLcode code, bool connected) {
  switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_CONNECT:
      return Failure::Kind::unreachable;
    case CURLE_OPERATION_TIMEDOUT:
      return connected ? Failure::Kind::lost : Failure::Kind::unreachable;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return Failure::Kind::lost;
    default:
      return Failure::Kind::permanent;
  }
}

// Whether the store takes the request's credentials for expired, by its error code.
bool isExpiry(AttemptOutcome const& outcome) {
  auto const* const response = std::get_if<Response>(&outcome);
  return response != nullptr && (response->status == 400 || response->status == 401 || response->status == 403) &&
         (response->body.find(">ExpiredToken<") != std::string::npos ||
          response->body.find(">TokenRefreshRequired<") != std::string::npos);
}

}  // namespace

AttemptOutcome sendRequest(HttpRequest const& request, std::string const& caBundle, std::chrono::milliseconds timeout) {
  ConnectionPool& pool = ConnectionPool::instance();
  std::unique_ptr<Connection> connection = pool.acquire();
  std::string const signing = "aws:amz:" + request.region + ':' + request.service;
  HeaderList headers;
  for (std::string const& header : request.headers) headers = append(std::move(headers), header);
  AttemptOutcome outcome;
  {
    Transfer transfer(*connection);
    transfer.set(CURLOPT_URL, request.url.c_str());
    transfer.set(CURLOPT_PATH_AS_IS, 1L);
    transfer.set(CURLOPT_PROTOCOLS_STR, "http,https");
    transfer.set(CURLOPT_USERAGENT, "korvan-storage-s3");
    transfer.set(CURLOPT_NOSIGNAL, 1L);
    transfer.set(CURLOPT_SSL_VERIFYPEER, 1L);
    transfer.set(CURLOPT_SSL_VERIFYHOST, 2L);
    if (!caBundle.empty()) transfer.set(CURLOPT_CAINFO, caBundle.c_str());
    if (!request.viaProxy) transfer.set(CURLOPT_PROXY, "");
    transfer.set(CURLOPT_TIMEOUT_MS, std::max(1L, static_cast<long>(timeout.count())));
    transfer.set(CURLOPT_CONNECTTIMEOUT_MS, connectTimeoutMilliseconds);
    transfer.set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    transfer.set(CURLOPT_LOW_SPEED_TIME, idleTimeoutSeconds);
    if (!request.body.empty()) {
      transfer.set(CURLOPT_POSTFIELDSIZE, static_cast<long>(request.body.size()));
      transfer.set(CURLOPT_POSTFIELDS, request.body.c_str());
    }
    if (request.method != "GET") transfer.set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
    if (request.credentials != nullptr) {
      transfer.set(CURLOPT_AWS_SIGV4, signing.c_str());
      transfer.set(CURLOPT_USERNAME, request.credentials->accessKey.c_str());
      transfer.set(CURLOPT_PASSWORD, request.credentials->secret.c_str());
      if (!request.credentials->sessionToken.empty())
        headers = append(std::move(headers), "x-amz-security-token: " + request.credentials->sessionToken);
    }
    if (headers) transfer.set(CURLOPT_HTTPHEADER, headers.get());
    CURLcode const code = transfer.run();
    vfs::countRequest(transfer.receivedBytes());
    if (code == CURLE_OK)
      outcome = transfer.takeResponse();
    else
      outcome = Failure{failureKind(code, transfer.connected()), transfer.errorText(code)};
  }
  pool.release(std::move(connection));
  return outcome;
}

CurlTransport::CurlTransport(Configuration configuration) : configuration_(std::move(configuration)) {}

AttemptOutcome CurlTransport::get(std::string const& url, std::chrono::milliseconds timeout) {
  HttpRequest request{.url = url, .region = configuration_.region, .service = "s3"};
  if (!configuration_.credentials) return sendRequest(request, configuration_.caBundle, timeout);
  for (bool renewed = false;; renewed = true) {
    auto const credentials = configuration_.credentials->current();
    request.credentials = credentials.get();
    // The SHA-256 of an empty body: libcurl includes it in the signature, but doesn't send it.
    if (credentials)
      request.headers = {"x-amz-content-sha256: e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"};
    AttemptOutcome outcome = sendRequest(request, configuration_.caBundle, timeout);
    if (renewed || !isExpiry(outcome) || !configuration_.credentials->reject(credentials)) return outcome;
  }
}

}  // namespace foundation::storage::s3
