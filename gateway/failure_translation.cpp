#include "gateway/failure_translation.hpp"

#include "fl/filesystem/fsys_exception.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "korvan/io/message_ids.hpp"
#include "korvan/io/vx_err_msg_id.hpp"

namespace korvan::io::internal {

namespace {

namespace vfs = foundation::storage::vfs;
using KORVAN::automation::io::FileIO::InvalidFile;
using KORVAN::virtualfilesystem::invalidIRI;
using KORVAN::virtualfilesystem::permissionDenied;
using KORVAN::virtualfilesystem::unsupportedProvider;

std::u16string locationText(vfs::Exception const& failure, std::u16string const& pattern) {
  if (vfs::hasIRIPrefix(pattern)) return failure.getLocation().toString();
  return vfs::fromAbsoluteIRI(failure.getLocation()).native();
}

}  // namespace

void reportFailure(std::u16string const& pattern) {
  try {
    throw;
  } catch (fl::filesystem::FsysExceptionBase const& failure) {
    vxErrMsgId(InvalidFile(failure.path()));
  } catch (vfs::InvalidIRIException const& failure) {
    vxErrMsgId(invalidIRI(failure.getInvalidIRIString()));
  } catch (vfs::UnsupportedIRISchemeException const& failure) {
    vxErrMsgId(unsupportedProvider(failure.getScheme()));
  } catch (vfs::Exception const& failure) {
    std::u16string const location = locationText(failure, pattern);
    if (failure.getErrorCode() == static_cast<int>(vfs::ErrorCode::permissionDenied))
      vxErrMsgId(permissionDenied(location));
    vxErrMsgId(InvalidFile(location));
  }
}

}  // namespace korvan::io::internal
