#include "foundation/storage/s3/transfer.hpp"

#include <utility>

#include "foundation/core/text/ascii.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr int pollMilliseconds = 40;  // an interrupt must be noticed within 50 ms

}  // namespace

Transfer::Transfer(Connection& connection) : connection_(connection) {
  curl_easy_reset(easy());
  set(CURLOPT_WRITEFUNCTION, &Transfer::onBody);
  set(CURLOPT_WRITEDATA, this);
  set(CURLOPT_HEADERFUNCTION, &Transfer::onHeader);
  set(CURLOPT_HEADERDATA, this);
  set(CURLOPT_ERRORBUFFER, error_);
  // Host names are looked up on a thread of libcurl, which can't be cancelled. Without this, libcurl would wait for that
  // thread when the request ends first, by an interrupt or a timeout: half a minute if the name servers are silent.
  set(CURLOPT_QUICK_EXIT, 1L);
}

Transfer::~Transfer() {
  curl_multi_remove_handle(connection_.multi.get(), easy());
  curl_easy_reset(easy());
}

CURLcode Transfer::run() {
  if (curl_multi_add_handle(connection_.multi.get(), easy()) != CURLM_OK) return CURLE_FAILED_INIT;
  for (int running = 1;;) {
    if (curl_multi_perform(connection_.multi.get(), &running) != CURLM_OK) return CURLE_FAILED_INIT;
    utThrowIfInterruptPending();
    if (running == 0) break;
    curl_multi_poll(connection_.multi.get(), nullptr, 0, pollMilliseconds, nullptr);
  }
  if (exception_) std::rethrow_exception(exception_);
  int left = 0;
  CURLMsg const* const message = curl_multi_info_read(connection_.multi.get(), &left);
  return message != nullptr && message->msg == CURLMSG_DONE ? message->data.result : CURLE_FAILED_INIT;
}

Response Transfer::takeResponse() {
  curl_easy_getinfo(easy(), CURLINFO_RESPONSE_CODE, &response_.status);
  curl_off_t seconds = 0;
  if (curl_easy_getinfo(easy(), CURLINFO_RETRY_AFTER, &seconds) == CURLE_OK && seconds > 0)
    response_.retryAfter = std::chrono::seconds(seconds);
  return std::move(response_);
}

Failure Transfer::failure(CURLcode code) const {
  return Failure{failureKind(code), errorText(code)};
}

// An exception must not pass through libcurl: a callback stores it and ends the transfer by returning 0.
template <class Receive>
std::size_t Transfer::guarded(std::size_t count, Receive receive) noexcept {
  try {
    return receive() ? count : 0;
  } catch (...) {
    exception_ = std::current_exception();
    return 0;
  }
}

std::size_t Transfer::onBody(char* data, std::size_t, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  return transfer.guarded(count, [&] {
    transfer.receivedBytes_ += count;
    transfer.tooLarge_ = transfer.receivedBytes_ > maximumBodyBytes;
    if (!transfer.tooLarge_) transfer.response_.body.append(data, count);
    return !transfer.tooLarge_;
  });
}

std::size_t Transfer::onHeader(char* data, std::size_t, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  return transfer.guarded(count, [&] {
    transfer.noteHeader(std::string_view(data, count));
    return true;
  });
}

void Transfer::noteHeader(std::string_view line) {
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

bool Transfer::connected() const {
  char* address = nullptr;
  return curl_easy_getinfo(easy(), CURLINFO_PRIMARY_IP, &address) == CURLE_OK && address != nullptr && *address != '\0';
}

bool Transfer::requestSent() const {
  long bytes = 0;
  return curl_easy_getinfo(easy(), CURLINFO_REQUEST_SIZE, &bytes) == CURLE_OK && bytes > 0;
}

Failure::Kind Transfer::failureKind(CURLcode code) const {
  // A proxy's URL that libcurl can't parse has the code of a proxy that can't be reached: only the text differs.
  if (std::string_view(error_).starts_with("Unsupported proxy ")) return Failure::Kind::permanent;
  switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
      return Failure::Kind::unreachable;
    case CURLE_OPERATION_TIMEDOUT:
      return connected() ? Failure::Kind::lost : Failure::Kind::unreachable;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return Failure::Kind::lost;
    case CURLE_UNSUPPORTED_PROTOCOL:  // a response that doesn't begin as HTTP does
    case CURLE_OUT_OF_MEMORY:         // a header of over 100 KB, as well
      return requestSent() ? Failure::Kind::lost : Failure::Kind::permanent;
    default:
      return Failure::Kind::permanent;
  }
}

std::string Transfer::errorText(CURLcode code) const {
  if (tooLarge_) return "the response is larger than 32 MiB";
  if (code == CURLE_OUT_OF_MEMORY && requestSent() && receivedBytes_ == 0)
    return "a header of the response is longer than libcurl accepts";
  std::string text = error_[0] != '\0' ? error_ : curl_easy_strerror(code);
  // libcurl cuts off longer messages. What it cut may be a URL with a password, which couldn't be recognised any more.
  if (text.size() >= CURL_ERROR_SIZE - 1) text = text.substr(0, text.rfind("://")) + "...";
  return text;
}

}  // namespace foundation::storage::s3
