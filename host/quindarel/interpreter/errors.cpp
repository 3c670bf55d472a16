#include "quindarel/interpreter/errors.hpp"

#include <new>
#include <utility>

#include "fl/filesystem/fsys_exception.hpp"
#include "foundation/core/except/msg_id_exception.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "quindarel/interpreter/dispatcher.hpp"
#include "quindarel/interrupt/interrupt_exception.hpp"

namespace Quindarel {

namespace {

/// A message of the host's own.
class HostMessage : public resource_core::BaseMsgID {
 public:
  explicit HostMessage(char const* mnemonic) : BaseMsgID("KORVAN:interpreter", mnemonic) {}
  HostMessage(char const* mnemonic, std::string const& argument) : BaseMsgID("KORVAN:interpreter", mnemonic, 1) {
    setArgument(0, argument);
  }
};

using HostException = foundation::core::except::Exception<HostMessage, std::exception, void>;

InterpreterError errorOf(foundation::core::except::IUserException const& error, std::string reason = {}) {
  auto const* withID = dynamic_cast<foundation::core::except::IMsgIDException const*>(&error);
  return {error.GetID(), error.GetUnicodeMessageTxt(), withID ? std::optional(withID->GetBaseMsgIDObj()) : std::nullopt,
          std::move(reason)};
}

/// The reason in the exception that is being handled, if it is one of the host's storage; otherwise empty. A builtin
/// reports such a failure from its handler, with a message that has no argument for the reason.
std::string currentReason() {
  if (!std::current_exception()) return {};
  try {
    throw;
  } catch (foundation::storage::vfs::Exception const& failure) {
    return failure.reason();
  } catch (fl::filesystem::FsysExceptionBase const& failure) {
    return failure.reason();
  } catch (...) {
    return {};
  }
}

}  // namespace

InterpreterError::InterpreterError(std::string identifier, std::u16string message,
                                   std::optional<resource_core::BaseMsgID> id, std::string reason)
    : identifier_(std::move(identifier)),
      message_(std::move(message)),
      id_(std::move(id)),
      reason_(std::move(reason)),
      what_(foundation::core::text::toBytesLossy(message_)) {}

InterpreterError::~InterpreterError() noexcept = default;

InterpreterError currentInterpreterError() {
  try {
    throw;
  } catch (InterpreterError const& error) {
    return error;
  } catch (foundation::core::except::IUserException const& error) {
    return errorOf(error);
  } catch (System::InterruptException const&) {
    return errorOf(HostException(HostMessage("Interrupted")));
  } catch (current_working_folder::UnknownFolderException const& error) {
    return errorOf(HostException(HostMessage("CurrentFolderUnknown", error.reason())));
  } catch (std::bad_alloc const&) {
    return errorOf(HostException(HostMessage("OutOfMemory")));
  } catch (std::exception const& error) {
    return errorOf(HostException(HostMessage("Failure", error.what())));
  } catch (...) {
    return errorOf(HostException(HostMessage("Failure", "no reason was reported")));
  }
}

}  // namespace Quindarel

namespace matrix::detail {

void error_minrhs() {
  do_legacy_vx_error(Quindarel::HostException(Quindarel::HostMessage("NotEnoughInputs")));
}

void error_maxrhs() {
  do_legacy_vx_error(Quindarel::HostException(Quindarel::HostMessage("TooManyInputs")));
}

void error_maxlhs() {
  do_legacy_vx_error(Quindarel::HostException(Quindarel::HostMessage("TooManyOutputs")));
}

void do_legacy_vx_error(foundation::core::except::IUserException const& error) {
  throw Quindarel::errorOf(error, Quindarel::currentReason());
}

}  // namespace matrix::detail
