#include "capi/search_failure.hpp"

#include <stdexcept>
#include <variant>

#include "fl/filesystem/fsys_exception.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "gateway/failure_translation.hpp"
#include "quindarel/interpreter/dispatcher.hpp"
#include "quindarel/interpreter/errors.hpp"
#include "quindarel/interrupt/interrupt_exception.hpp"

namespace kglob {
namespace {

namespace vfs = foundation::storage::vfs;
using foundation::core::text::toBytesLossy;

kglob_status statusOf(vfs::ErrorCode code) {
  switch (code) {
    case vfs::ErrorCode::notFound:
      return KGLOB_NOT_FOUND;
    case vfs::ErrorCode::permissionDenied:
      return KGLOB_PERMISSION_DENIED;
    case vfs::ErrorCode::other:
      break;
  }
  return KGLOB_INACCESSIBLE;
}

kglob_status currentStatus() {
  try {
    throw;
  } catch (vfs::InvalidIRIException const&) {
    return KGLOB_INVALID_IRI;
  } catch (vfs::UnsupportedIRISchemeException const&) {
    return KGLOB_UNSUPPORTED_SCHEME;
  } catch (vfs::Exception const& failure) {
    return statusOf(vfs::ErrorCode{failure.getErrorCode()});
  } catch (fl::filesystem::FsysExceptionBase const& failure) {
    return statusOf(vfs::errorCodeOfErrno(failure.error()));
  } catch (Quindarel::System::InterruptException const&) {
    return KGLOB_INTERRUPTED;
  } catch (std::invalid_argument const&) {
    return KGLOB_INVALID_ARGUMENT;
  } catch (...) {
    return KGLOB_FAILED;
  }
}

// As the builtin reports it: what concerns the current folder with the host's message, everything else with the
// library's.
Quindarel::InterpreterError currentError(bool asIRI) {
  try {
    throw;
  } catch (Quindarel::current_working_folder::UnknownFolderException const&) {
    return Quindarel::currentInterpreterError();
  } catch (...) {
    try {
      korvan::io::internal::reportFailure(asIRI ? u"file:///" : u"");
    } catch (...) {
      return Quindarel::currentInterpreterError();
    }
  }
}

// The library's messages have the location as their first argument, the only one that is UTF-16.
std::string locationOf(Quindarel::InterpreterError const& error) {
  if (!error.messageID() || error.messageID()->arguments().empty()) return {};
  auto const* const location = std::get_if<std::u16string>(&error.messageID()->arguments()[0]);
  std::string bytes;
  if (location == nullptr || foundation::core::text::appendBytes(bytes, *location)) return bytes;
  return toBytesLossy(*location);
}

}  // namespace

SearchFailure describeCurrentException(bool asIRI) {
  Quindarel::InterpreterError const error = currentError(asIRI);
  return {currentStatus(), error.identifier(), error.what(), locationOf(error), error.reason()};
}

}  // namespace kglob
