#pragma once

#include <exception>
#include <optional>
#include <string>

#include "foundation/core/except/base_msg_id.hpp"
#include "foundation/core/except/user_exception.hpp"

namespace Quindarel {

/// The error that ends a builtin's call, as the interpreter's user is told it.
class KORVAN_HOST_EXPORT InterpreterError : public std::exception {
 public:
  /// `id` and `reason` may be absent.
  InterpreterError(std::string identifier, std::u16string message, std::optional<resource_core::BaseMsgID> id,
                   std::string reason = {});
  ~InterpreterError() noexcept override;

  /// The error identifier: elements with ":" between.
  std::string const& identifier() const noexcept { return identifier_; }

  /// The message: one line of text.
  std::u16string const& message() const noexcept { return message_; }

  /// The message ID that the message was made from, where there was one.
  std::optional<resource_core::BaseMsgID> const& messageID() const noexcept { return id_; }

  /// What the system or the store said, as UTF-8: "Permission denied". Empty unless the error was reported while an
  /// exception of the host's storage layer or local path library was being handled.
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

/// The exception that is being handled, as the user is told it: an `InterpreterError` as itself, an exception with a
/// message for the user by its identifier and message, an interrupt, lack of memory and everything else by messages of
/// the host's own. To be called in a handler. So a host handles whatever leaves a builtin in one way.
KORVAN_HOST_EXPORT InterpreterError currentInterpreterError();

}  // namespace Quindarel

/// How a builtin ends its call by an error of the interpreter. In this host each of these throws
/// `Quindarel::InterpreterError`, through the builtin's frames; callers must not count on that and be ready for a
/// return.
namespace matrix::detail {

/// Not enough inputs.
KORVAN_HOST_EXPORT void error_minrhs();

/// Too many inputs.
KORVAN_HOST_EXPORT void error_maxrhs();

/// Too many outputs asked for.
KORVAN_HOST_EXPORT void error_maxlhs();

/// Ends the call with the identifier, the message and, where it has one, the message ID of `error`, all of which are
/// copied, and with the reason of the exception that is being handled, where the host's storage has thrown it.
KORVAN_HOST_EXPORT void do_legacy_vx_error(foundation::core::except::IUserException const& error);

}  // namespace matrix::detail
