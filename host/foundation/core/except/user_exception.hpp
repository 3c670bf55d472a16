#pragma once

#include <string>

#include "foundation/core/except/root_exception.hpp"

namespace foundation::core::except {

/// An exception for the interpreter's user: an identifier that programs can act on, and a message to read.
class KORVAN_HOST_EXPORT IUserException : public IException {
 public:
  ~IUserException() noexcept override;

  /// The message.
  std::u16string ToUstringImpl() const override;

  /// The error identifier: elements with ":" between.
  virtual std::string GetID() const = 0;

  /// The message: one line.
  virtual std::u16string GetUnicodeMessageTxt() const = 0;

 protected:
  IUserException() noexcept;
  IUserException(IUserException const&) noexcept;
  IUserException& operator=(IUserException const&) noexcept;
};

}  // namespace foundation::core::except
