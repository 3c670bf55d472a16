#include "glob/existence.hpp"

#include "foundation/storage/vfs/exists.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "foundation/storage/vfs/storage_system.hpp"
#include "path/path_access.hpp"

namespace korvan::io::internal {

namespace vfs = foundation::storage::vfs;

PathKind pathKind(Path const& path, Path const& base) {
  try {
    auto const location = PathAccess::toIRI(absolute(path, base));
    return vfs::exists(location, Quindarel::KorvanStorageSystem::GetStorageSystemReference());
  } catch (vfs::Exception const& failure) {
    if (failure.getErrorCode() == static_cast<int>(vfs::ErrorCode::notFound)) return PathKind::notFound;
    throw;
  }
}

}  // namespace korvan::io::internal
