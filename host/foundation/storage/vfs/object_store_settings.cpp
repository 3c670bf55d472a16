#include "foundation/storage/vfs/object_store_settings.hpp"

#include <utility>

#include "foundation/core/threads/mutex.hpp"

namespace foundation::storage::vfs {
namespace {

struct Shared {
  core::threads::Mutex mutex;
  ObjectStoreSettings settings KORVAN_GUARDED_BY(mutex);
};

// Never destroyed: another thread may still search while the process ends.
Shared& shared() {
  static auto& instance = *new Shared;
  return instance;
}

}  // namespace

void setObjectStoreSettings(ObjectStoreSettings settings) {
  Shared& current = shared();
  core::threads::MutexLock const lock(current.mutex);
  current.settings = std::move(settings);
}

ObjectStoreSettings objectStoreSettings() {
  Shared& current = shared();
  core::threads::MutexLock const lock(current.mutex);
  return current.settings;
}

}  // namespace foundation::storage::vfs
