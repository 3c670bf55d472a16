#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/core/threads/mutex.hpp"
#include "foundation/storage/s3/credentials/credentials_source.hpp"

namespace foundation::storage::s3 {

/// The credentials of one source, fetched when they are first needed and renewed before they expire. Safe to use from
/// several threads at once: one of them fetches; the others wait, or use the present credentials while these are valid.
class CredentialsCache {
 public:
  /// Coarser than the system clock's own type, which ends in the year 2262.
  using Time = std::chrono::sys_time<std::chrono::milliseconds>;

  /// `now` gives the time that expirations are compared with; by default the system clock's.
  explicit CredentialsCache(std::unique_ptr<CredentialsSource> source, std::function<Time()> now = nullptr);

  /// Valid credentials, or null if the source turned out not to exist: then it is asked again after ten minutes.
  ///
  /// Renewal begins five minutes before the expiration, for short-lived credentials after half of their life. If it
  /// fails, the present ones are used as long as they are valid. After a failure the source isn't asked again for twice
  /// the time that it took, one second at least: without valid credentials, each call then fails at once.
  ///
  /// Throws `CredentialsError`, and `Quindarel::System::InterruptException` within 50 ms of an interrupt.
  std::shared_ptr<Credentials const> current();

  /// The credentials that were fetched last, without fetching any; null if there are none.
  std::shared_ptr<Credentials const> latest() const;

  /// The secrets of the credentials that were fetched last and of those before, which requests in flight may be signed
  /// with.
  std::vector<std::string> secrets() const;

  /// Notes that the store takes these credentials for expired. Returns whether `current` may now give others.
  bool reject(std::shared_ptr<Credentials const> const& credentials);

 private:
  /// The valid credentials to use now, perhaps null; nothing if the caller has to fetch new ones and then call
  /// `finish`. Waits for another thread's fetch if there are no valid ones.
  std::optional<std::shared_ptr<Credentials const>> presentOrBegin();
  void finish(Time began, std::optional<Credentials> fetched, std::string failure);
  void abandon();
  void replace(std::optional<Credentials> fetched) KORVAN_REQUIRES(mutex_);

  std::unique_ptr<CredentialsSource> const source_;  // used by the thread that has set fetching_
  std::function<Time()> const now_;

  mutable core::threads::Mutex mutex_;
  std::condition_variable fetchEnded_;
  bool fetching_ KORVAN_GUARDED_BY(mutex_) = false;
  std::shared_ptr<Credentials const> credentials_ KORVAN_GUARDED_BY(mutex_);
  std::shared_ptr<Credentials const> previous_ KORVAN_GUARDED_BY(mutex_);
  // Up to when the credentials, or their absence, are valid, and when it is time to fetch others.
  Time validUntil_ KORVAN_GUARDED_BY(mutex_) = Time::min();
  Time renewAt_ KORVAN_GUARDED_BY(mutex_) = Time::min();
  std::string failure_ KORVAN_GUARDED_BY(mutex_);  // of the last fetch; empty if it succeeded
};

/// A cache of credentials that never expire, from the source of that name.
std::shared_ptr<CredentialsCache> fixedCredentials(std::string name, Credentials credentials);

}  // namespace foundation::storage::s3
