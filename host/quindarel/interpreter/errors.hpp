#pragma once

#include <exception>
#include <optional>
#include <string>

#include "foundation/core/except/base_msg_id.hpp"
#include "foundation/core/except/user_exception.hpp"

namespace Quindarel {

/// The error that ends a builtin's call, as it is reported to the user of the interpreter.
class KORVAN_HOST_EXPORT InterpreterError : public std::exception {
 public:
  /// `id` and `reason` may be absent.
  InterpreterError(std::string identifier, std::u16string message, std::optional<resource_core::BaseMsgID> id,
                   std::string reason = {});
  ~InterpreterError() noexcept override;

  /// The error identifier: elements separated by ":".
  std::string const& identifier() const noexcept { return identifier_; }

  /// The message: one line of text.
  std::u16string const& message() const noexcept { return message_; }

  /// The message ID that the message was made from, if there was one.
  std::optional<resource_core::BaseMsgID> const& messageID() const noexcept { return id_; }

  /// The reason reported by the system or the store, as UTF-8, such as "Permission denied". Empty unless the error was
  /// reported while an exception of the host's storage layer or local path library was being handled.
  std::string const& reason() const noexcept { return reason_; }

  /// The message as UTF-8.
  char const* what() const noexcept override { return what_.c_str(); }

 private:
  std::string identifier_;
  std::u16string message_;
  std::optional<resource_core::BaseMsgID> id_;
  std::string reason_;
  std::string what_;
};

/// The exception that is being handled, as an error for the user: an `InterpreterError` unchanged, an exception with
/// a message for the user with its identifier and message, and an interrupt, lack of memory or any other exception
/// with a message of the host's own. To be called in an exception handler, so that a host can handle all exceptions
/// of a builtin in the same way.
KORVAN_HOST_EXPORT InterpreterError currentInterpreterError();

}  // namespace Quindarel

/// The functions with which a builtin ends its call with an error of the interpreter. In this host each of them throws
/// `Quindarel::InterpreterError`; in another one it may return, and callers must be prepared for that.
namespace matrix::detail {

/// Not enough inputs.
KORVAN_HOST_EXPORT void error_minrhs();

/// Too many inputs.
KORVAN_HOST_EXPORT void error_maxrhs();

/// Too many outputs requested.
KORVAN_HOST_EXPORT void error_maxlhs();

/// Ends the call with copies of the identifier, the message and, if there is one, the message ID of `error`, and with
/// the reason in the exception that is being handled, if that is one of the host's storage.
KORVAN_HOST_EXPORT void do_legacy_vx_error(foundation::core::except::IUserException const& error);

}  // namespace matrix::detail
