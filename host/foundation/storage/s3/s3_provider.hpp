#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "foundation/storage/s3/client.hpp"
#include "foundation/storage/vfs/provider.hpp"

namespace foundation::storage::s3 {

/// Serves "s3://bucket/key": a folder is a bucket, a common prefix or a marker object "dir/"; a file is any other
/// object. Where an object and a prefix share a name there is one entry, a folder. A marker is no entry of its own
/// folder. Keys with an element that is empty, "." or ".." or that holds NUL can't be named by a path: they are left
/// out, the folders above them are not. Everything is found by listing; no object is read.
class Provider : public vfs::Provider {
 public:
  /// Makes the store when it is first asked for; may throw `ConfigurationError`, and is then asked again the next time.
  using MakeStore = std::function<std::unique_ptr<Store>()>;

  explicit Provider(MakeStore makeStore);

  Authority authority() const noexcept override { return Authority::required; }

  /// One request; a second one where more than a hundred names sort between the key and the key with "/". None for a
  /// key that no store can have; more where a store answers with empty pages and says that more follows.
  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override;

  /// One request for each 1,000 entries whose names begin with `namePrefix`. With a prefix that nothing begins with it
  /// isn't told whether the folder exists.
  void list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) override;

  bool servesSubtrees() const noexcept override { return true; }

  /// One request for 1,000 keys.
  vfs::SubtreePage subtree(vfs::AbsoluteIRI const& folder, std::string_view prefix, std::string_view after) override;

 private:
  Store& store(vfs::AbsoluteIRI const& location);

  MakeStore makeStore_;
  std::mutex mutex_;
  std::unique_ptr<Store> store_;
};

}  // namespace foundation::storage::s3
