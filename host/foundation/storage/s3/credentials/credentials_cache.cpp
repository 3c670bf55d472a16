#include "foundation/storage/s3/credentials/credentials_cache.hpp"

#include <algorithm>
#include <utility>

#include "foundation/storage/s3/credentials/static_source.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::s3 {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr minutes renewalWindow(5);
constexpr minutes absenceTime(10);
constexpr CredentialsCache::Time::duration shortestPause = seconds(1);
constexpr CredentialsCache::Time::duration longestPause =
    minutes(1);                       // whatever a clock that was set makes of the time
constexpr milliseconds pollTime(40);  // an interrupt must be noticed within 50 ms

}  // namespace

CredentialsCache::CredentialsCache(std::unique_ptr<CredentialsSource> source, std::function<Time()> now)
    : source_(std::move(source)), now_(now ? std::move(now) : [] {
        return std::chrono::time_point_cast<milliseconds>(std::chrono::system_clock::now());
      }) {}

std::shared_ptr<Credentials const> CredentialsCache::current() {
  for (;;) {
    if (auto present = presentOrBegin()) return *std::move(present);
    Time const began = now_();
    std::optional<Credentials> fetched;
    std::string failure;
    try {
      fetched = source_->fetch();
      if (fetched) requireUsable(*fetched);
      if (fetched && fetched->expiration && *fetched->expiration <= now_())
        throw CredentialsError("the credentials have already expired");
    } catch (ConfigurationError const& error) {
      failure = error.what();
    } catch (...) {  // an interrupt ends this caller's work only: another thread may fetch
      abandon();
      throw;
    }
    finish(began, std::move(fetched), std::move(failure));
  }
}

std::optional<std::shared_ptr<Credentials const>> CredentialsCache::presentOrBegin() {
  core::threads::MutexLock lock(mutex_);
  for (;;) {
    Time const now = now_();
    bool const valid = now < validUntil_;
    if (valid && (fetching_ || now < renewAt_)) return credentials_;
    if (!fetching_ && now < renewAt_)
      throw CredentialsError("no credentials from " + source_->name() + ": " + failure_);
    if (!fetching_) {
      fetching_ = true;
      return std::nullopt;
    }
    fetchEnded_.wait_for(lock.forWaiting(), pollTime);
    utThrowIfInterruptPending();
  }
}

void CredentialsCache::finish(Time began, std::optional<Credentials> fetched, std::string failure) {
  core::threads::MutexLock const lock(mutex_);
  Time const now = now_();
  fetching_ = false;
  failure_ = std::move(failure);
  if (!failure_.empty()) {
    renewAt_ = now + std::clamp(2 * (now - began), shortestPause, longestPause);
  } else if (!fetched) {
    validUntil_ = renewAt_ = now + absenceTime;
    replace(std::nullopt);
  } else if (!fetched->expiration) {
    validUntil_ = renewAt_ = Time::max();
    replace(std::move(fetched));
  } else {
    validUntil_ = *fetched->expiration;
    renewAt_ = validUntil_ - std::min<Time::duration>(renewalWindow, (validUntil_ - now) / 2);
    replace(std::move(fetched));
  }
  fetchEnded_.notify_all();
}

void CredentialsCache::replace(std::optional<Credentials> fetched) {
  previous_ = std::move(credentials_);
  credentials_ = fetched ? std::make_shared<Credentials const>(*std::move(fetched)) : nullptr;
}

void CredentialsCache::abandon() {
  core::threads::MutexLock const lock(mutex_);
  fetching_ = false;
  fetchEnded_.notify_all();
}

std::shared_ptr<Credentials const> CredentialsCache::latest() const {
  core::threads::MutexLock const lock(mutex_);
  return credentials_;
}

std::vector<std::string> CredentialsCache::secrets() const {
  core::threads::MutexLock const lock(mutex_);
  std::vector<std::string> secrets;
  for (auto const& each : {credentials_, previous_})
    if (each) secrets.insert(secrets.end(), {each->secret, each->sessionToken});
  return secrets;
}

bool CredentialsCache::reject(std::shared_ptr<Credentials const> const& credentials) {
  core::threads::MutexLock const lock(mutex_);
  if (!credentials || !credentials->expiration) return false;
  if (credentials == credentials_ && !fetching_) validUntil_ = renewAt_ = Time::min();
  return true;
}

std::shared_ptr<CredentialsCache> fixedCredentials(std::string name, Credentials credentials) {
  return std::make_shared<CredentialsCache>(std::make_unique<StaticSource>(std::move(name), std::move(credentials)));
}

}  // namespace foundation::storage::s3
