#include "foundation/storage/vfs/storage_system.hpp"

#include <map>
#include <utility>

#include <dlfcn.h>
#include <unistd.h>

#include "foundation/core/text/bytes.hpp"
#include "foundation/core/threads/mutex.hpp"
#include "foundation/storage/file/file_provider.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {
namespace {

struct Registry {
  core::threads::Mutex mutex;
  std::map<std::u16string, std::shared_ptr<Provider>, std::less<>> providers KORVAN_GUARDED_BY(mutex);
};

// Never destroyed: another thread may still use a provider while the process ends.
Registry& registry() {
  static auto& instance = *new Registry;
  return instance;
}

std::shared_ptr<Provider> const& fileProvider() {
  static auto const& instance = *new std::shared_ptr<Provider>(std::make_shared<file::FileProvider>());
  return instance;
}

// The folder that this library was loaded from, with its final "/".
std::string ownFolder() {
  Dl_info info = {};
  if (::dladdr(reinterpret_cast<void const*>(&fileProvider), &info) == 0 || info.dli_fname == nullptr) return {};
  std::string const file = info.dli_fname;
  return file.substr(0, file.rfind('/') + 1);
}

// Some programs write "s3a" or "s3n" for "s3", after the clients that they use.
std::u16string_view usualScheme(std::u16string_view scheme) {
  return scheme == u"s3a" || scheme == u"s3n" ? u"s3" : scheme;
}

// A scheme contains no "/", so the file is in the modules' folder.
std::shared_ptr<Provider> loadModule(std::u16string_view scheme) {
  std::u16string const name(scheme);
  std::string const file = ownFolder() + "korvanhost/korvan-storage-" + core::text::toBytesLossy(name) + ".so";
  if (::access(file.c_str(), F_OK) != 0) {
    throw UnsupportedIRISchemeException(name, "no storage provider serves this scheme");
  }
  void* const module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  void* const symbol = module == nullptr ? nullptr : ::dlsym(module, "korvanStorageProvider");
  if (symbol == nullptr) {
    char const* const problem = ::dlerror();
    throw UnsupportedIRISchemeException(name, problem == nullptr ? "its provider can't be loaded" : problem);
  }
  return std::shared_ptr<Provider>(reinterpret_cast<MakeProvider>(symbol)());
}

}  // namespace

StorageSystem& StorageSystem::instance() {
  static StorageSystem system;
  return system;
}

std::shared_ptr<Provider> StorageSystem::provider(std::u16string_view scheme) {
  if (scheme == u"file") return fileProvider();
  Registry& known = registry();
  core::threads::MutexLock const lock(known.mutex);
  if (auto const own = known.providers.find(scheme); own != known.providers.end()) return own->second;
  std::u16string_view const usual = usualScheme(scheme);
  auto found = known.providers.find(usual);
  if (found == known.providers.end()) {
    found = known.providers.emplace(std::u16string(usual), loadModule(usual)).first;
  }
  return found->second;
}

void StorageSystem::registerProvider(std::u16string const& scheme, std::shared_ptr<Provider> provider) {
  Registry& known = registry();
  core::threads::MutexLock const lock(known.mutex);
  if (provider) {
    known.providers.insert_or_assign(scheme, std::move(provider));
  } else {
    known.providers.erase(scheme);
  }
}

}  // namespace foundation::storage::vfs

namespace Quindarel::KorvanStorageSystem {

foundation::storage::vfs::StorageSystemReference GetStorageSystemReference() {
  return foundation::storage::vfs::StorageSystemReference(foundation::storage::vfs::StorageSystem::instance());
}

}  // namespace Quindarel::KorvanStorageSystem
