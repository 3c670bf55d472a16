#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/threads/mutex.hpp"
#include "foundation/storage/s3/client.hpp"
#include "foundation/storage/s3/object_location.hpp"
#include "foundation/storage/vfs/provider.hpp"

namespace foundation::storage::s3 {

/// Serves "s3://bucket/key". A folder is a bucket, a common prefix or a marker object "dir/"; a file is any other
/// object. If an object and a prefix have the same name, there is one entry, a folder. A marker isn't an entry of its
/// own folder. No path can name a key with an element that is empty, "." or ".." or contains NUL: such keys are left
/// out, but not the folders above them. "s3://" is a folder, too: of the account's buckets. Everything is found by
/// listing; no object is read.
class S3Provider final : public vfs::Provider {
 public:
  /// Makes the client at the first request. If it throws `ConfigurationError`, it is called again at the next one.
  using MakeClient = std::function<std::unique_ptr<Client>()>;

  explicit S3Provider(MakeClient makeClient);

  Authority authority() const noexcept override { return Authority::required; }

  /// One request; a second one if more than a hundred names sort between the key and the key with "/"; more if the
  /// store returns empty pages first. None for a key that no store can have. For "s3://" as for `list`: the account may
  /// be unable to list its buckets.
  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override;

  /// Requests as for `kind`. A folder has no facts but its kind.
  std::optional<vfs::EntryFacts> facts(vfs::AbsoluteIRI const& location) override;

  /// One request for each 1,000 entries whose names begin with `namePrefix`. If there are none and the prefix isn't
  /// empty, nothing shows whether the folder exists: the list is then empty. For "s3://" one request for all buckets,
  /// more only if the store sends them in pages.
  void list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) override;

  bool servesSubtrees() const noexcept override { return true; }

  /// One request for 1,000 keys.
  vfs::SubtreePage subtree(vfs::SubtreeRequest const& request) override;

 private:
  class Pages;

  Client& client(vfs::AbsoluteIRI const& location);
  std::optional<vfs::EntryFacts> find(vfs::AbsoluteIRI const& location, bool withFacts);
  std::vector<std::string> buckets(vfs::AbsoluteIRI const& account);
  bool anyKeyBelow(ObjectLocation const& target, vfs::AbsoluteIRI const& location);

  MakeClient makeClient_;
  core::threads::Mutex mutex_;
  std::unique_ptr<Client> client_ KORVAN_GUARDED_BY(mutex_);
  std::atomic<bool> isUnordered_ = false;  // whether the store was found not to list in byte order
};

}  // namespace foundation::storage::s3
