#include "quindarel/interpreter/dispatcher.hpp"

#include <atomic>

#include "fl/filesystem/operations.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace Quindarel::current_working_folder {

UnknownFolderException::UnknownFolderException(int error) : FsysExceptionBase(u".", error) {}

UnknownFolderException::~UnknownFolderException() = default;

}  // namespace Quindarel::current_working_folder

namespace {

using namespace Quindarel::current_working_folder;

class ProcessFolder final : public ICurrentWorkingFolder {
 public:
  foundation::storage::vfs::Folder get() const override {
    try {
      return {foundation::storage::vfs::toAbsoluteIRI(u"file", fl::filesystem::absolute({}, {})),
              Quindarel::KorvanStorageSystem::GetStorageSystemReference()};
    } catch (fl::filesystem::FsysExceptionBase const& failure) {
      throw UnknownFolderException(failure.error());
    }
  }
};

// Initialised without code and trivially destroyed, since a builtin may be called before or after other
// static objects exist.
constinit ProcessFolder const processFolder;
constinit std::atomic<ICurrentWorkingFolder const*> hostsFolder{nullptr};
constinit Kdispatcher dispatcher;

}  // namespace

Kdispatcher* Kdispatcher::getDispatcher() noexcept {
  return &dispatcher;
}

ICurrentWorkingFolder const* Kdispatcher::GetCurrentWorkingFolder() const noexcept {
  ICurrentWorkingFolder const* const folder = hostsFolder.load(std::memory_order_acquire);
  return folder ? folder : &processFolder;
}

void Kdispatcher::SetCurrentWorkingFolder(ICurrentWorkingFolder const* folder) noexcept {
  hostsFolder.store(folder, std::memory_order_release);
}
