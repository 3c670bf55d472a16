#include "interpreter/dispatcher.hpp"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

#include <unistd.h>

#include "foundation/core/text/bytes.hpp"
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
    char buffer[PATH_MAX];
    std::unique_ptr<char, decltype(&std::free)> longer(nullptr, &std::free);
    char const* folder = ::getcwd(buffer, sizeof buffer);
    if (!folder && errno == ERANGE) {
      longer.reset(::getcwd(nullptr, 0));
      folder = longer.get();
    }
    if (!folder) throw UnknownFolderException(errno);
    fl::filesystem::upath const path(foundation::core::text::fromBytes(folder));
    return {foundation::storage::vfs::toAbsoluteIRI(u"file", path),
            Quindarel::KorvanStorageSystem::GetStorageSystemReference()};
  }
};

// Made without code at load time and never destroyed: a builtin may be called while the process ends.
constinit ProcessFolder const processFolder;
constinit std::atomic<ICurrentWorkingFolder const*> chosenFolder{nullptr};
constinit Kdispatcher dispatcher;

}  // namespace

Kdispatcher* Kdispatcher::getDispatcher() noexcept {
  return &dispatcher;
}

ICurrentWorkingFolder const* Kdispatcher::GetCurrentWorkingFolder() const noexcept {
  ICurrentWorkingFolder const* const folder = chosenFolder.load(std::memory_order_acquire);
  return folder ? folder : &processFolder;
}

void Kdispatcher::SetCurrentWorkingFolder(ICurrentWorkingFolder const* folder) noexcept {
  chosenFolder.store(folder, std::memory_order_release);
}
