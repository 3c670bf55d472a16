#pragma once

#include <concepts>
#include <exception>
#include <string>

#include "foundation/core/except/base_msg_id.hpp"
#include "foundation/core/except/exception_template.hpp"
#include "foundation/core/except/user_exception.hpp"

namespace foundation::core::except {

/// An exception whose message is in the host's catalogue.
class KORVAN_HOST_EXPORT IMsgIDException : public IUserException {
 public:
  ~IMsgIDException() noexcept override;

  /// The catalogue's text with the message's arguments filled in.
  std::u16string GetUnicodeMessageTxt() const override;

  /// The message. Valid as long as the exception.
  virtual resource_core::BaseMsgID const& GetBaseMsgIDObj() const = 0;

  /// The error identifier of a message: its component, ":" and its mnemonic.
  std::string get_error_id(resource_core::BaseMsgID const& id) const;

 protected:
  IMsgIDException() noexcept;
  IMsgIDException(IMsgIDException const&) noexcept;
  IMsgIDException& operator=(IMsgIDException const&) noexcept;
};

/// The exception that carries the message `T`.
template <class T>
requires std::derived_from<T, resource_core::BaseMsgID>
class KORVAN_HOST_EXPORT Exception<T, std::exception, void> : public IMsgIDException, public std::exception {
 public:
  /// Carries a copy of the message.
  explicit Exception(T const& id) : id_(id), errorId_(get_error_id(id_)) {}

  /// A copy on the heap, owned by the caller.
  boost::exception_detail::clone_base const* clone() const override { return new Exception(*this); }

  /// Throws a copy.
  [[noreturn]] void rethrow() const override { throw Exception(*this); }

  /// The message as UTF-8. Valid as long as the exception.
  char const* what() const noexcept override { return IException::what(); }

  /// The message's error identifier.
  std::string GetID() const override { return errorId_; }

  /// The message, of type `T`.
  resource_core::BaseMsgID const& GetBaseMsgIDObj() const override { return id_; }

 private:
  T id_;
  std::string errorId_;
};

}  // namespace foundation::core::except
