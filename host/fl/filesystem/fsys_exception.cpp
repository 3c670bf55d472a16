#include "fl/filesystem/fsys_exception.hpp"

#include <system_error>
#include <utility>

#include "foundation/core/text/bytes.hpp"

namespace fl::filesystem {

FsysExceptionBase::FsysExceptionBase(std::u16string path, int error)
    : path_(std::move(path)),
      error_(error),
      reason_(std::generic_category().message(error)),
      what_(foundation::core::text::toBytesLossy(path_) + ": " + reason_) {}

FsysExceptionBase::~FsysExceptionBase() = default;

}  // namespace fl::filesystem
