#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/provider.hpp"

namespace foundation::storage::vfs {

/// The process's storage system: which provider serves which scheme. "file" is built in. Another scheme is served by a
/// registered provider, or else by a module "korvanhost/korvan-storage-SCHEME.so" in the host library's own folder,
/// which is loaded when the scheme is first used and never unloaded. "s3a" and "s3n" are other names of "s3": its
/// provider also serves them. May be used by several threads at once.
class KORVAN_HOST_EXPORT StorageSystem {
 public:
  /// The storage system of this process.
  static StorageSystem& instance();

  /// The provider of the scheme (in lower case), shared with the caller. Throws `UnsupportedIRISchemeException` when
  /// there is none or its module can't be loaded.
  std::shared_ptr<Provider> provider(std::u16string_view scheme);

  /// Lets `provider` serve the scheme (in lower case, not "file") from now on; a null pointer removes the registration.
  void registerProvider(std::u16string const& scheme, std::shared_ptr<Provider> provider);
};

/// The function that a module exports, with C linkage, under the name "korvanStorageProvider". Makes the provider of
/// its scheme, which the caller then owns.
using MakeProvider = Provider* (*)();

/// A handle on the storage system, passed by value; as cheap as a pointer.
class KORVAN_HOST_EXPORT StorageSystemReference {
 public:
  /// Refers to the system, which must outlive it.
  explicit StorageSystemReference(StorageSystem& system) noexcept : system_(&system) {}
  StorageSystem& system() const noexcept { return *system_; }

 private:
  StorageSystem* system_;
};

}  // namespace foundation::storage::vfs

namespace Quindarel::KorvanStorageSystem {

/// The host's storage system. Never fails, makes no request.
KORVAN_HOST_EXPORT foundation::storage::vfs::StorageSystemReference GetStorageSystemReference();

}  // namespace Quindarel::KorvanStorageSystem
