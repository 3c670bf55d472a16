#include "foundation/storage/vfs/storage_exception.hpp"

#include <cerrno>
#include <system_error>
#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/iri_access.hpp"

namespace foundation::storage::vfs {
namespace {

std::string describe(std::u16string const& subject, std::string const& reason) {
  return core::text::toBytesLossy(subject) + ": " + reason;
}

AbsoluteIRI noLocation() {
  return IRIAccess::fromWrittenForm({}, 0, 0);
}

}  // namespace

Exception::Exception(ErrorCode code, AbsoluteIRI location, std::string reason, int systemError)
    : code_(code),
      systemError_(systemError),
      location_(std::move(location)),
      reason_(std::move(reason)),
      what_(describe(location_.toString(), reason_)) {}

Exception::Exception(std::u16string const& subject, std::string reason)
    : code_(ErrorCode::other), location_(noLocation()), reason_(std::move(reason)), what_(describe(subject, reason_)) {}

Exception::~Exception() = default;

InvalidIRIException::InvalidIRIException(std::u16string text, std::string reason)
    : Exception(text, std::move(reason)), text_(std::move(text)) {}

InvalidIRIException::~InvalidIRIException() = default;

UnsupportedIRISchemeException::UnsupportedIRISchemeException(std::u16string scheme, std::string reason)
    : Exception(scheme, std::move(reason)), scheme_(std::move(scheme)) {}

UnsupportedIRISchemeException::~UnsupportedIRISchemeException() = default;

ErrorCode errorCodeOfErrno(int error) noexcept {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return ErrorCode::notFound;
    case EACCES:
    case EPERM:
      return ErrorCode::permissionDenied;
    default:
      return ErrorCode::other;
  }
}

Exception exceptionOfErrno(int error, AbsoluteIRI location) {
  return {errorCodeOfErrno(error), std::move(location), std::generic_category().message(error), error};
}

}  // namespace foundation::storage::vfs
