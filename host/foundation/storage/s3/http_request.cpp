#include "foundation/storage/s3/http_request.hpp"

#include <memory>
#include <new>
#include <utility>

#include <curl/curl.h>

#include "foundation/storage/s3/connection_pool.hpp"
#include "foundation/storage/s3/transfer.hpp"
#include "foundation/storage/vfs/read_session.hpp"

namespace foundation::storage::s3 {
namespace {

// libcurl takes 0 for its own default of five minutes.
constexpr long neverMilliseconds = 1'000'000'000;

struct FreeList {
  void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

void append(HeaderList& headers, std::string const& header) {
  curl_slist* const longer = curl_slist_append(headers.get(), header.c_str());
  if (longer == nullptr) throw std::bad_alloc();
  (void)headers.release();  // part of the longer list
  headers.reset(longer);
}

void setOptions(Transfer& transfer, HttpRequest const& request, ConnectionOptions const& options) {
  transfer.set(CURLOPT_URL, request.url.c_str());
  transfer.set(CURLOPT_PATH_AS_IS, 1L);
  transfer.set(CURLOPT_PROTOCOLS_STR, "http,https");
  transfer.set(CURLOPT_USERAGENT, "korvan-storage-s3");
  transfer.set(CURLOPT_NOSIGNAL, 1L);
  transfer.set(CURLOPT_SSL_VERIFYPEER, 1L);
  transfer.set(CURLOPT_SSL_VERIFYHOST, 2L);
  if (!options.caBundle.empty()) transfer.set(CURLOPT_CAINFO, options.caBundle.c_str());
  if (request.direct) transfer.set(CURLOPT_NOPROXY, "*");
  if (request.method != "GET") {
    transfer.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    transfer.set(CURLOPT_POSTFIELDS, request.body.c_str());
    transfer.set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
  }
  transfer.set(CURLOPT_TIMEOUT_MS, static_cast<long>(request.timeout.count()));
  transfer.set(CURLOPT_CONNECTTIMEOUT_MS,
               options.connectTimeout == 0 ? neverMilliseconds : 1000L * options.connectTimeout);
  if (options.readTimeout != 0) {
    transfer.set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    transfer.set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(options.readTimeout));
  }
}

void sign(Transfer& transfer, Signature const& signature, HeaderList& headers) {
  std::string const provider = "aws:amz:" + signature.region + ':' + signature.service;
  transfer.set(CURLOPT_AWS_SIGV4, provider.c_str());
  transfer.set(CURLOPT_USERNAME, signature.credentials.accessKey.c_str());
  transfer.set(CURLOPT_PASSWORD, signature.credentials.secret.c_str());
  if (!signature.credentials.sessionToken.empty())
    append(headers, "x-amz-security-token: " + signature.credentials.sessionToken);
}

}  // namespace

AttemptOutcome sendRequest(HttpRequest const& request, ConnectionOptions const& options) {
  ConnectionPool& pool = ConnectionPool::instance();
  std::unique_ptr<Connection> connection = pool.acquire();
  HeaderList headers;
  AttemptOutcome outcome;
  {
    Transfer transfer(*connection);
    setOptions(transfer, request, options);
    for (std::string const& header : request.headers) append(headers, header);
    if (request.signature) sign(transfer, *request.signature, headers);
    transfer.set(CURLOPT_HTTPHEADER, headers.get());
    CURLcode const code = transfer.run();
    vfs::countRequest(transfer.receivedBytes());
    if (code == CURLE_OK)
      outcome = transfer.takeResponse();
    else
      outcome = transfer.failure(code);
  }
  pool.release(std::move(connection));
  return outcome;
}

}  // namespace foundation::storage::s3
